// The three states of a check box, and the lock state of a record of the catalog.
#pragma once

#include <atomic>
#include <cstddef>

#include "services/QWCmdUtils.h"

namespace vantory {

// On (every child on, or locked), off, or mixed. A state never computed reads as Off.
enum State : int { Off = 0, On = 1, Mixed = -1 };

// How many files, or users, are locked and how many are not.
struct LockCount {
  std::size_t locked = 0;
  std::size_t unlocked = 0;

  void add(bool isLocked) { ++(isLocked ? locked : unlocked); }
  void add(const LockCount& others) {
    locked += others.locked;
    unlocked += others.unlocked;
  }
};

// Finding out means looking at every file. A window shows the states, and its main thread must not wait for the disk,
// so there they are worked out by whoever says that they are due; a task without a window works out what is asked for,
// which mostly is nothing. May be read and set from any thread.
class LockState {
 public:
  LockState() = default;
  LockState(const LockState& other) : value_(other.value_.load()) {}
  LockState& operator=(const LockState& other) {
    value_ = other.value_.load();
    return *this;
  }
  LockState& operator=(int state) {
    value_ = state;
    return *this;
  }

  // The state, by `workOut` when it is due.
  template <class WorkOut>
  int value(WorkOut workOut) const {
    int state = value_;
    if (state != kDue) return state;
    state = workOut();
    value_ = state;
    return state;
  }
  // From now on the state is what `workOut` tells.
  template <class WorkOut>
  void becomeDue(WorkOut workOut) {
    value_ = QWCmdUtils::sharedController().hasGUI() ? workOut() : kDue;
  }

 private:
  static constexpr int kDue = 2;

  mutable std::atomic<int> value_ = Off;
};

}  // namespace vantory
