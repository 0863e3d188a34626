#include "services/QWLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <future>
#include <latch>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "services/Runtime.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/ScratchFolder.h"

namespace vantory {
namespace {

using test::exists;
using test::readFile;
using test::writeFile;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

constexpr char kDate[] = "2026-11-14 21:35:17 +0000";

// The real disk, with a place to interfere.
class InterferedFiles : public LinuxFileSystem {
 public:
  Status move(const std::string& source, const std::string& destination) override {
    if (failMoves) return Error{std::errc::io_error, "no move"};
    return LinuxFileSystem::move(source, destination);
  }
  Result<std::unique_ptr<AppendFile>> openForAppending(const std::string& path) override {
    auto file = LinuxFileSystem::openForAppending(path);
    if (!file) return file.error();
    return std::unique_ptr<AppendFile>(std::make_unique<Appender>(*this, std::move(*file)));
  }

  bool failMoves = false;
  std::function<Status()> beforeAppend = [] { return Status(); };

 private:
  struct Appender : AppendFile {
    Appender(InterferedFiles& owner, std::unique_ptr<AppendFile> file) : owner(owner), file(std::move(file)) {}
    Status append(std::string_view bytes) override {
      if (Status status = owner.beforeAppend(); !status) return status;
      return file->append(bytes);
    }
    InterferedFiles& owner;
    std::unique_ptr<AppendFile> file;
  };
};

class LogTest : public testing::Test {
 protected:
  std::string log(int generation = 1) const {
    return home_ / ("Library/Logs/Quarrywell/Vantory.task." + std::to_string(generation) + ".log");
  }
  // The messages of a file, without header and dates.
  static std::vector<std::string> messages(const std::string& path) {
    std::vector<std::string> found;
    for (const std::string& line : split(readFile(path), '\n'))
      if (line.starts_with(std::string(kDate) + " - ")) found.push_back(line.substr(sizeof(kDate) + 2));
    return found;
  }
  static std::string entry(const std::string& message) { return std::string(kDate) + " - " + message + "\n"; }

  test::ScratchFolder home_;
  test::ScratchFolder machine_;
  InterferedFiles files_;
  LinuxFileMetadata metadata_;
  test::FakePlatform fakes_{files_, metadata_, machine_.path(), home_.path()};
  std::optional<Runtime> runtime_{std::in_place, fakes_.platform};
};

TEST_F(LogTest, NewLogHasItsHeaderAndShortEntriesAreThereAtOnce) {
  QWLog::createNewLog("Vantory.task");
  const std::string header = "Log started: " + std::string(kDate) + "\nVersion: " VANTORY_VERSION +
                             "\nPath: /opt/vantory/vantory\n"
                             "System: OS X Test System 1.0, 4 CPU(s), 16.00 GB RAM\n"
                             "Running in 64-bit mode\n";
  EXPECT_EQ(readFile(log()), header);
  QWLog::appendLog("  Trashing %@ (%i) \n", "/x/a\n\xff%@", 2);
  fakes_.clock.advance(std::chrono::hours(24 * 365));
  QWLog::appendLog(" \t ");
  QWLog::finishWriting();
  EXPECT_EQ(readFile(log()), header + entry("Trashing /x/a\\n\\xff%@ (2)") + "2027-11-14 21:35:17 +0000 - \n");
  const auto mode = std::filesystem::status(log()).permissions();
  EXPECT_EQ(mode, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(LogTest, SixCreationsLeaveFiveGenerationsUnderTheFirstName) {
  EXPECT_EQ(QWLog::sharedController().appName(), "Vantory");
  for (int i = 1; i <= 6; ++i) {
    QWLog::createNewLog(i == 1 ? "Vantory.task" : "Other");
    QWLog::appendLog("run %i", i);
  }
  for (int generation = 1; generation <= 5; ++generation)
    EXPECT_THAT(messages(log(generation)), ElementsAre("run " + std::to_string(7 - generation)));
  const std::filesystem::directory_iterator entries(home_ / "Library/Logs/Quarrywell");
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 5);
}

TEST_F(LogTest, LongEntriesAndEntriesBehindABacklogAreNotWaitedFor) {
  QWLog::createNewLog("Vantory.task");
  std::promise<void> open;
  const std::shared_future<void> gate = open.get_future().share();
  files_.beforeAppend = [gate] {
    gate.wait();
    return Status();
  };
  const std::string film = "\U0001f39e";  // two units each
  std::string longText;
  for (int i = 0; i < 50; ++i) longText += film;
  QWLog::appendLog("%@", longText);
  QWLog::appendLog("short");
  EXPECT_EQ(QWLog::sharedController().bytesInQueue(), 105u);
  EXPECT_THAT(messages(log()), IsEmpty());
  open.set_value();
  QWLog::finishWriting();
  EXPECT_EQ(QWLog::sharedController().bytesInQueue(), 0u);
  EXPECT_THAT(messages(log()), ElementsAre(longText, "short"));
}

TEST_F(LogTest, FullFileRollsOverAfterTheEntryThatFilledIt) {
  QWLog::createNewLog("Vantory.task");
  const std::string text(5000 - sizeof(kDate) - 3, 'x');  // with date and line end 5000 bytes
  for (int i = 0; i < 99; ++i) QWLog::appendLog("%@", text);
  QWLog::appendLog("%@", text.substr(1));
  QWLog::finishWriting();
  EXPECT_EQ(QWLog::sharedController().bytesWritten(), 499'999u);
  EXPECT_FALSE(exists(log(2)));
  QWLog::appendLog("last");  // runs on this thread, and so does the roll-over
  QWLog::appendLog("%@", "after");
  QWLog::finishWriting();
  EXPECT_EQ(messages(log(2)).size(), 101u);
  EXPECT_THAT(readFile(log(2)), EndsWith(entry("last")));
  EXPECT_THAT(readFile(log()), StartsWith("Log started: "));
  EXPECT_THAT(messages(log()), ElementsAre("Log truncated at 500KB", "after"));
}

TEST_F(LogTest, ManyThreadsKeepTheirOrderAcrossRollOvers) {
  constexpr int kThreads = 4;
  constexpr int kEntries = 1200;
  QWLog::createNewLog("Vantory.task");
  const std::string padding(200, 'x');
  std::vector<std::thread> threads;
  std::latch start(kThreads);
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      start.arrive_and_wait();
      for (int i = 0; i < kEntries; ++i) QWLog::appendLog("%i %i %@", thread, i, i % 3 ? padding : std::string());
      if (thread == 0) QWLog::finishWriting();
    });
  for (std::thread& thread : threads) thread.join();
  runtime_.reset();  // flushes
  std::vector<int> next(kThreads, 0);
  int rollOvers = 0;
  for (const int generation : {3, 2, 1})
    for (const std::string& message :
         exists(log(generation)) ? messages(log(generation)) : std::vector<std::string>()) {
      if (message == "Log truncated at 500KB") {
        ++rollOvers;
        continue;
      }
      const std::vector<std::string> words = split(message, ' ');
      ASSERT_EQ(std::stoi(words.at(1)), next.at(std::stoul(words.at(0)))++) << message;
    }
  EXPECT_THAT(next, testing::Each(kEntries));
  EXPECT_EQ(rollOvers, 1);
}

TEST_F(LogTest, SwitchedOffMeansNoFileAtAll) {
  writeFile(home_ / "Library/Preferences/com.quarrywell.global.plist",
            "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>disable-logging</key><true/></dict></plist>");
  QWLog::holdUntilNewLog("held");
  QWLog::createNewLog("Vantory.task");
  QWLog::appendLog("nothing");
  QWLog::finishWriting();
  EXPECT_TRUE(QWLog::sharedController().loggingDisabled());
  EXPECT_FALSE(exists(home_ / "Library/Logs"));
  EXPECT_THAT(fakes_.systemLog.messages(), ElementsAre("Logging is disabled"));
}

TEST_F(LogTest, FailuresAreToldToTheSystemLogAndTriedAgain) {
  const std::string folder = home_ / "Library/Logs/Quarrywell";
  writeFile(home_ / "Library/Logs", "in the way");
  QWLog::createNewLog("Vantory.task");
  QWLog::appendLog("lost");
  EXPECT_THAT(fakes_.systemLog.messages(),
              ElementsAre("Unable to create folder " + folder + ".", "Unable to log the following information: lost",
                          "Unable to open log for output"));
  EXPECT_EQ(QWLog::sharedController().bytesInQueue(), 0u);
  std::filesystem::remove(home_ / "Library/Logs");
  test::makeFolders(folder);
  QWLog::appendLog("found");
  EXPECT_EQ(readFile(log()), entry("found"));
  files_.failMoves = true;
  QWLog::createNewLog();
  EXPECT_EQ(fakes_.systemLog.messages().back(), "Unable to move file " + log(1) + " to " + log(2));
  QWLog::appendLog("kept");
  EXPECT_EQ(readFile(log()), entry("found") + entry("kept"));
  files_.beforeAppend = [] { return Status(Error{std::errc::no_space_on_device, "disk full"}); };
  QWLog::appendLog("too much");
  EXPECT_EQ(fakes_.systemLog.messages().back(), "Exception writing to log: disk full");
  EXPECT_EQ(QWLog::sharedController().bytesInQueue(), 8u);
}

TEST_F(LogTest, SuperuserWritesTheMachineWideFileAndMovesTheUsersGenerations) {
  const std::string machineLog = machine_ / "Library/Logs/Quarrywell/Vantory.task.1.log";
  fakes_.users.superuser = true;
  writeFile(log(), "the user's\n");
  QWLog::createNewLog("Vantory.task");
  EXPECT_TRUE(exists(log(1)));  // no machine-wide file was there
  QWLog::createNewLog();
  EXPECT_FALSE(exists(log(1)));
  EXPECT_EQ(readFile(log(2)), "the user's\n");
  fakes_.users.console.reset();
  QWLog::createNewLog();
  QWLog::appendLog("Nobody is logged in");
  EXPECT_THAT(messages(machineLog), ElementsAre("Nobody is logged in"));
  EXPECT_THAT(fakes_.systemLog.messages(), IsEmpty());
}

}  // namespace
}  // namespace vantory
