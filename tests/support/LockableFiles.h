// The real disk, with locks that any machine has.
#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/files/LinuxFileMetadata.h"
#include "platform/linux/files/LinuxFileSystem.h"

namespace vantory::test {

// The real disk, but for rights, and for locks: who may really set them differs from machine to machine.
class FakeLocks : public LinuxFileMetadata {
 public:
  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool lock) override {
    std::vector<Status> results;
    for (const std::string& path : paths) {
      const bool there = std::filesystem::exists(path);
      if (there && lockAnswer) lock ? (void)locked.insert(path) : (void)locked.erase(path);
      results.push_back(there ? lockAnswer : Error{std::errc::no_such_file_or_directory, path});
    }
    return results;
  }
  Status checkWritable(const std::string& path) const override {
    return unwritable.contains(path) ? Error{whyUnwritable, path} : Status();
  }

  std::set<std::string> locked;
  std::set<std::string> unwritable;
  std::errc whyUnwritable = std::errc::permission_denied;
  Status lockAnswer;
};

// The real disk, but for those locks, and nothing waits to be written.
class LockableFiles : public LinuxFileSystem {
 public:
  explicit LockableFiles(const FakeLocks& locks) : locks_(locks) {}
  Result<FileInfo> info(const std::string& path, Links links) const override {
    auto found = LinuxFileSystem::info(path, links);
    if (found) found->locked = locks_.locked.contains(path);
    return found;
  }
  Status sync(const std::string&) override { return {}; }

 private:
  const FakeLocks& locks_;
};

}  // namespace vantory::test
