// What support wants to see, collected in a folder of its own.
#pragma once

#include <cstdint>
#include <string>

#include "base/Result.h"

namespace vantory {

// The folder is removed at the end of its life. What cannot be copied, or is too much, is passed over and told in both
// logs. Any thread, one at a time.
class LogGathering {
 public:
  explicit LogGathering(std::string folder);
  ~LogGathering();
  LogGathering(const LogGathering&) = delete;
  LogGathering& operator=(const LogGathering&) = delete;

  // Makes the folder anew. Without it nothing can be added.
  Status begin();
  // The program's logs, crash reports and preference file, of the user and of the machine.
  void addProgram(const std::string& name);
  void addFile(const std::string& path);
  // Makes a zip archive of the folder.
  Status packInto(const std::string& archive) const;

  bool isEmpty() const { return copied_ == 0 && failed_ == 0; }  // nothing was there to be added
  int copied() const { return copied_; }
  int failed() const { return failed_; }

 private:
  void addMatching(const std::string& folder, const std::string& prefix, const std::string& suffix);
  void add(const std::string& path, const char* complaint);
  Status copy(const std::string& path);

  const std::string folder_;
  std::uint64_t room_;  // bytes that may still be added
  int copied_ = 0;
  int failed_ = 0;
};

}  // namespace vantory
