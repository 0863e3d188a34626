// The three states of a check box, and the lock state of a record of the catalog.
#pragma once

#include <atomic>
#include <cstddef>

namespace vantory {

// On (every child on, or locked), off, or mixed. A state never computed reads as Off.
enum class State : int { Off = 0, On = 1, Mixed = -1 };
using enum State;

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

// Finding out means looking at every file, so a state that is due is worked out when somebody asks for it. May be read
// and set from any thread.
class LockState {
 public:
  LockState() = default;
  LockState(const LockState& other) : value_(other.value_.load()), due_(other.due_.load()) {}
  LockState& operator=(const LockState& other) {
    value_ = other.value_.load();
    due_ = other.due_.load();
    return *this;
  }
  LockState& operator=(State state) {
    value_ = state;
    due_ = false;
    return *this;
  }

  // The state, by `workOut` when it is due. Another thread that asks meanwhile gets the one that was last known.
  template <class WorkOut>
  State value(WorkOut workOut) const {
    // What becomes due during the look is looked at once more.
    if (due_.exchange(false)) value_ = workOut();
    return value_;
  }
  // The state that was last set or worked out, without looking at any file.
  State lastKnown() const { return value_; }
  void becomeDue() { due_ = true; }

 private:
  mutable std::atomic<State> value_ = Off;
  mutable std::atomic<bool> due_ = false;
};

}  // namespace vantory
