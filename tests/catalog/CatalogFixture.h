// A home, a machine and a disk for tests of the catalog and of what builds on it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "catalog/BackupPlace.h"
#include "catalog/QWPrefItem.h"
#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "services/FailureTally.h"
#include "services/QWLog.h"
#include "services/Runtime.h"
#include "services/Text.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

// The real disk, but for flags that need no rights, and nothing waits to be written.
class HandyMetadata : public LinuxFileMetadata {
 public:
  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool lock) override {
    if (lockAnswer)
      for (const std::string& path : paths) lock ? (void)locked.insert(path) : (void)locked.erase(path);
    return std::vector<Status>(paths.size(), lockAnswer);
  }
  bool isWritable(const std::string& path) const override { return !unwritable.contains(path); }

  Status lockAnswer;
  std::set<std::string> locked;
  std::set<std::string> unwritable;
};

class HandyFileSystem : public LinuxFileSystem {
 public:
  explicit HandyFileSystem(const HandyMetadata& metadata) : metadata_(metadata) {}
  Result<FileInfo> info(const std::string& path, Links links) const override {
    auto found = LinuxFileSystem::info(path, links);
    if (found) found->locked = metadata_.locked.contains(path);
    return found;
  }
  Status sync(const std::string&) override { return {}; }

 private:
  const HandyMetadata& metadata_;
};

// A backup folder of the user who lives in `home`.
class FolderBackup : public BackupPlace {
 public:
  FolderBackup(std::string path, std::string home) : path_(std::move(path)), home_(std::move(home)) {}
  std::string path() const override { return path_; }
  std::string safeUserPath(const std::string& path) const override {
    return path.starts_with(home_) ? kHomePlaceholder + path.substr(home_.size()) : path;
  }

 private:
  std::string path_;
  std::string home_;
};

class CatalogTest : public testing::Test {
 protected:
  CatalogTest() {
    QWLog::createNewLog("Test");
    files_.heal();
  }

  static std::shared_ptr<QWPrefItem> itemWith(std::vector<std::string> patterns, bool lockable = true) {
    return std::make_shared<QWPrefItem>("Layouts", "layouts", lockable, std::move(patterns));
  }

  // All messages since the log began, or since the last call.
  std::vector<std::string> logged() {
    QWLog::finishWriting();
    std::vector<std::string> messages;
    const std::string text = readFile(home_ / "Library/Logs/Quarrywell/Test.1.log");
    for (const std::string& line : split(text.substr(logRead_), '\n'))
      if (const std::size_t dash = line.find(" +0000 - "); dash != std::string::npos)
        messages.push_back(line.substr(dash + 9));
    logRead_ = text.size();
    return messages;
  }

  std::string inTrash(const std::string& name) const { return home_ / (".local/share/Trash/files/" + name); }

  ScratchFolder home_;
  ScratchFolder machine_;
  HandyMetadata metadata_;
  HandyFileSystem disk_{metadata_};
  FaultyFileSystem files_{disk_};
  FakePlatform fakes_{files_, metadata_, machine_.path(), home_.path()};
  Runtime runtime_{fakes_.platform};

 private:
  std::size_t logRead_ = 0;
};

}  // namespace vantory::test
