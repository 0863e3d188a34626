// What the tests of the services stand on.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "services/QWLog.h"
#include "services/Runtime.h"
#include "services/Text.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

// The real disk, except that no flag is really set: who may set it differs from machine to machine.
class FakeLocks : public LinuxFileMetadata {
 public:
  std::vector<Status> setAllLocked(const std::vector<std::string>& paths, bool locked) override {
    for (const std::string& path : paths) changes.emplace_back(path, locked);
    return std::vector<Status>(paths.size(), answer);
  }

  std::vector<std::pair<std::string, bool>> changes;
  Status answer;
};

// Lets a file appear locked.
class LockableFiles : public LinuxFileSystem {
 public:
  Result<FileInfo> info(const std::string& path, Links links) const override {
    auto info = LinuxFileSystem::info(path, links);
    if (info) info->locked = locked == path;
    return info;
  }

  std::string locked;
};

// The real disk below a scratch home, with everything else faked.
class ServicesTest : public testing::Test {
 protected:
  ServicesTest() { QWLog::createNewLog("Test"); }

  // The messages logged so far, without their dates.
  std::vector<std::string> logged() const {
    QWLog::finishWriting();
    std::vector<std::string> messages;
    for (const std::string& line : split(readFile(home_ / "Library/Logs/Quarrywell/Test.1.log"), '\n'))
      if (const auto dash = line.find(" - "); dash != std::string::npos) messages.push_back(line.substr(dash + 3));
    return messages;
  }

  ScratchFolder home_;
  ScratchFolder machine_;
  LockableFiles disk_;
  FaultyFileSystem files_{disk_};
  FakeLocks metadata_;
  FakePlatform fake_{files_, metadata_, machine_.path(), home_.path()};
  Runtime runtime_{fake_.platform};
};

}  // namespace vantory::test
