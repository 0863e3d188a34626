// What the self-check is made of: for each promise of the platform a function that tries it.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "base/Paths.h"
#include "base/Result.h"
#include "platform/Platform.h"

namespace vantory {

enum class Outcome {
  Held,
  NotHeld,
  NotTried  // what is not there, on this machine or volume, or cannot be tried without changing something
};

struct Finding {
  Outcome outcome = Outcome::Held;
  std::string cause = {};  // why not; of what held a remark, or nothing
};

// Where the checks work.
struct Bench {
  Platform& platform;
  std::string folder;  // theirs alone

  std::string path(std::string_view name) const { return paths::join(folder, name); }
  // A new file with this content.
  std::string put(std::string_view name, std::string_view bytes, Status& outcome) const;
  // What a file holds; a text that no check writes where it cannot be read.
  std::string contentOf(const std::string& path) const;
  bool isThere(const std::string& path) const;
};

// One check in steps, all of which are taken; the first that fails is what it finds.
class Trial {
 public:
  explicit Trial(const Bench& bench) : bench_(bench) {}

  // What is to succeed. What the volume or the machine knows nothing of was not tried.
  void does(const Status& status);
  template <class T>
  void does(const Result<T>& result) {
    does(result.status());
  }
  // What is to fail so.
  void refuses(const Status& status, std::errc reason, std::string_view otherwise);
  // What is to be seen, and what is wrong where it is not.
  void sees(bool isSo, std::string_view otherwise);
  void passesOver(std::string_view cause) { note({Outcome::NotTried, std::string(cause)}); }
  // A new file of the bench's, which is to be made.
  std::string put(std::string_view name, std::string_view bytes);

  bool isGood() const { return finding_.outcome == Outcome::Held; }
  // The remark goes with what held.
  Finding finding(std::string remark = "") const;

 private:
  void note(Finding finding);

  const Bench& bench_;
  Finding finding_;
};

struct Check {
  std::string_view part;  // of the platform
  std::string_view promise;
  Finding (*tried)(const Bench& bench);
};

using Checks = std::span<const Check>;

}  // namespace vantory
