// What the tests of the services, and of what builds on them, stand on.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/Text.h"
#include "services/Runtime.h"
#include "services/TaskReport.h"
#include "services/log/QWLog.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/LockableFiles.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {

// The real disk below a scratch home, with everything else faked.
class ServicesTest : public testing::Test {
 protected:
  ServicesTest() {
    QWLog::createNewLog("Test");
    files_.heal();
  }

  // All messages, without their dates, since the log began or since the last call.
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
  FakeLocks metadata_;
  LockableFiles disk_{metadata_};
  FaultyFileSystem files_{disk_};
  FakePlatform fakes_{files_, metadata_, machine_.path(), home_.path()};
  Runtime runtime_{fakes_.platform};
  TaskReport report_;  // of what a test calls

 private:
  std::size_t logRead_ = 0;
};

}  // namespace vantory::test
