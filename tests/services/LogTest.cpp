#include "services/log/QWLog.h"

#include <sys/resource.h>

#include <csignal>
#include <latch>
#include <optional>
#include <thread>

#include "services/log/QWException.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kDate[] = "2026-11-14 21:35:17 +0000";

class LogTest : public ServicesTest {
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

  std::optional<Runtime> fresh_{std::in_place, fakes_.platform};
};

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
  fresh_.reset();  // flushes
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

TEST_F(LogTest, FailuresAreToldToTheSystemLogAndTriedAgain) {
  const std::string folder = home_ / "Library/Logs/Quarrywell";
  std::filesystem::remove_all(home_ / "Library/Logs");
  writeFile(home_ / "Library/Logs", "in the way");
  QWLog::createNewLog("Vantory.task");
  for (const char* line : {"lost", "lost too"}) QWLog::appendLog(line);
  EXPECT_THAT(fakes_.systemLog.messages(),
              ElementsAre("Unable to create folder " + folder + ".", "Unable to log the following information: lost",
                          "Unable to open log for output"));
  EXPECT_EQ(QWLog::sharedController().bytesInQueue(), 0u);
  std::filesystem::remove(home_ / "Library/Logs");
  makeFolders(folder);
  QWLog::appendLog("found");
  EXPECT_EQ(readFile(log()), entry("found"));
  files_.fail(Operation::Move, std::errc::io_error, FaultyFileSystem::kEveryCall);
  QWLog::createNewLog();
  EXPECT_EQ(fakes_.systemLog.messages().back(), "Unable to move file " + log(1) + " to " + log(2));
  QWLog::appendLog("kept");
  EXPECT_EQ(readFile(log()), entry("found") + entry("kept"));
  signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit full{std::filesystem::file_size(log()), before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &full);
  QWLog::appendLog("too much");
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(fakes_.systemLog.messages().back(), "Exception writing to log: " + log() + ": File too large");
  EXPECT_EQ(QWLog::sharedController().bytesInQueue(), 8u);
  QWLog::appendLog("enough");
  QWLog::finishWriting();
  EXPECT_EQ(readFile(log()), entry("found") + entry("kept") + entry("too much") + entry("enough"));
  EXPECT_EQ(QWLog::sharedController().bytesInQueue(), 0u);
}

TEST_F(LogTest, AFullDiskRollsNothingOver) {
  files_.heal();
  QWLog::createNewLog("Vantory.task");
  signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit full{std::filesystem::file_size(log()), before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &full);
  const std::string large(300'000, 'x');
  for (int i = 0; i < 4; ++i) QWLog::appendLog("%@", large);
  QWLog::finishWriting();
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_FALSE(exists(log(2)));
  EXPECT_EQ(QWLog::sharedController().bytesWritten(), 0u);
  const auto told = fakes_.systemLog.messages();
  EXPECT_EQ(std::ranges::count(told, "Exception writing to log: " + log() + ": File too large"), 1);
  files_.fail(Operation::Write, std::errc::no_space_on_device, FaultyFileSystem::kEveryCall);
  QWLog::createNewLog();  // at the next start
  EXPECT_FALSE(exists(log(2)));
  QWLog::appendLog("goes on");
  EXPECT_EQ(messages(log()).back(), "goes on");
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

TEST_F(LogTest, AnExceptionIsToldWithItsKind) {
  const std::system_error late(std::make_error_code(std::errc::timed_out), "peer");
  QWLog::createNewLog("Vantory.task");
  EXPECT_EQ(QWException::logException(std::runtime_error("100%"), "f:"), "Exception in f:. std::runtime_error - 100%.");
  EXPECT_EQ(messages(log()).back(), "Exception in f:. std::runtime_error - 100%.");
  EXPECT_TRUE(QWException::didTimeout(late));
  EXPECT_FALSE(QWException::didTimeout(std::runtime_error("late")));
}

}  // namespace
}  // namespace vantory::test
