#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

#include "platform/linux/LinuxFileMetadata.h"
#include "platform/linux/LinuxFileSystem.h"
#include "platform/linux/LinuxProcesses.h"
#include "services/MainThread.h"
#include "services/QWLog.h"
#include "services/QWTask.h"
#include "services/Runtime.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/ScratchFolder.h"

namespace vantory::test {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kShell = "/bin/sh";
constexpr seconds kNever = std::chrono::hours(24);

// Tools are real files; whether they are really started is the derived fixture's choice.
class TaskTest : public ::testing::Test {
 protected:
  explicit TaskTest(bool realProcesses = false)
      : platform_{fakes_.clock,
                  fakes_.users,
                  fakes_.folders,
                  files_,
                  metadata_,
                  files_,
                  realProcesses ? static_cast<Processes&>(processes_) : fakes_.processes,
                  fakes_.privileged,
                  fakes_.systemLog,
                  fakes_.system,
                  fakes_.workspace,
                  fakes_.taskClient,
                  fakes_.notifications} {
    MainThread::shared();
    QWLog::createNewLog("Vantory.task");
  }

  std::string log() const {
    QWLog::finishWriting();
    return readFile(scratch_ / "home/Library/Logs/Quarrywell/Vantory.task.1.log");
  }
  std::vector<std::string> systemLog() const { return fakes_.systemLog.messages(); }

  // What the work answers on a thread of its own, while the main thread serves whoever hands it work.
  template <class Work>
  auto offTheMainThread(Work work) {
    decltype(work()) answer{};
    std::atomic<bool> done = false;
    std::thread worker([&] {
      answer = work();
      done = true;
      MainThread::shared().notify();
    });
    MainThread::shared().runUntil([&] { return done.load(); });
    worker.join();
    return answer;
  }

  ScratchFolder scratch_;
  LinuxFileSystem files_;
  LinuxFileMetadata metadata_;
  FakePlatform fakes_{files_, metadata_, scratch_ / "root", scratch_ / "home"};
  LinuxProcesses processes_;
  Platform platform_;
  Runtime runtime_{platform_};
};

class RealTaskTest : public TaskTest {
 protected:
  RealTaskTest() : TaskTest(true) {}
};

TEST_F(TaskTest, RefusesWhatIsNoTool) {
  const std::string plain = scratch_ / "plain%@file";
  const std::string application = scratch_ / "Some.app";
  writeFile(plain, "#!/bin/sh\n");
  writeFile(application + "/Contents/Info.plist", "");
  EXPECT_FALSE(QWTask::runTask(plain, {}));
  EXPECT_FALSE(QWTask::runTaskAndReturn(application, {}));
  EXPECT_EQ(QWTask::terminationCodeFromTask("/missing", {}), -1);
  EXPECT_EQ(QWTask::dataFromTask("/missing", {}, seconds(1)), std::nullopt);
  EXPECT_EQ(QWTask::stringFromTask("/missing", {}), "");
  EXPECT_THAT(fakes_.processes.calls(), IsEmpty());
  EXPECT_THAT(systemLog(),
              ElementsAre("Error: " + plain + " is not executable", "Error: " + application + " is not executable",
                          "Error: /missing is not executable", "Error: /missing is not executable",
                          "Error: /missing is not executable"));
  EXPECT_THAT(log(), HasSubstr(" - Error: " + plain + " is not executable\n"));
}

TEST_F(TaskTest, SaysWhyAToolCouldNotBeStarted) {
  fakes_.processes.behaviour = [](const auto&) {
    return FakeProcesses::Run{.failure = Error{std::errc::not_enough_memory, "/bin/sh: Cannot allocate memory"}};
  };
  EXPECT_EQ(QWTask::terminationCodeFromTask(kShell, {}), -1);
  EXPECT_THAT(systemLog(), ElementsAre("Error: /bin/sh: Cannot allocate memory"));
  EXPECT_THAT(log(), HasSubstr("Error: /bin/sh: Cannot allocate memory\n"));
}

TEST_F(TaskTest, OnlyTheWaitingFormsWait) {
  fakes_.processes.behaviour = [](const auto&) { return FakeProcesses::Run{.untilTerminated = true}; };
  EXPECT_TRUE(QWTask::runTaskAndReturn(kShell, {"-c", "a"}));
  fakes_.processes.behaviour = [](const auto&) { return FakeProcesses::Run{.status = 3, .output = "out"}; };
  std::shared_ptr<Process> task;
  EXPECT_TRUE(QWTask::runTask(kShell, {}, task));
  EXPECT_NE(task, nullptr);
  EXPECT_EQ(QWTask::terminationCodeFromTask(kShell, {}, task), 3);
  EXPECT_EQ(QWTask::dataFromTask(kShell, {}, task), "out");
  using Call = FakeProcesses::Call;
  EXPECT_THAT(fakes_.processes.calls(),
              ElementsAre(Call{kShell, {"-c", "a"}, Streams::Discarded}, Call{kShell, {}, Streams::Discarded},
                          Call{kShell, {}, Streams::Discarded}, Call{kShell, {}, Streams::Captured}));
}

TEST_F(TaskTest, TextMustBeOfItsEncoding) {
  std::string output;
  fakes_.processes.behaviour = [&](const auto&) { return FakeProcesses::Run{.output = output}; };
  const auto utf8 = [] { return QWTask::stringFromTask(kShell, {}, QWTask::Encoding::Utf8, kNever); };
  output = "plain\x7f\n";
  EXPECT_EQ(QWTask::stringFromTask(kShell, {}), output);
  output =
      "Gr\xc3\xb6\xc3\x9f"
      "e";
  EXPECT_EQ(QWTask::stringFromTask(kShell, {}), std::nullopt);
  EXPECT_EQ(utf8(), output);
  output = "\xff";
  EXPECT_EQ(utf8(), std::nullopt);
}

TEST_F(TaskTest, ATimeLimitEndsTheToolAndSaysSo) {
  fakes_.processes.behaviour = [](const auto&) { return FakeProcesses::Run{.untilTerminated = true}; };
  EXPECT_EQ(offTheMainThread([] { return QWTask::terminationCodeFromTask(kShell, {}, seconds(0)); }), 128 + 15);
  EXPECT_THAT(systemLog(), ElementsAre("Task timed out. Terminating..."));
  EXPECT_THAT(log(), HasSubstr(" - Task /bin/sh timed out. Terminating...\n"));
}

TEST_F(TaskTest, ATimeLimitThatIsNotReachedLeavesNoTrace) {
  fakes_.processes.behaviour = [](const auto&) { return FakeProcesses::Run{.status = 4}; };
  EXPECT_EQ(offTheMainThread([] { return QWTask::terminationCodeFromTask(kShell, {}, kNever); }), 4);
  EXPECT_EQ(offTheMainThread([] { return QWTask::terminationCodeFromTask(kShell, {}, seconds(0)); }), 4);
  EXPECT_THAT(systemLog(), IsEmpty());
}

TEST_F(RealTaskTest, ATimeLimitNeverActsOnTheMainThread) {
  EXPECT_EQ(QWTask::terminationCodeFromTask(kShell, {"-c", "sleep 0.1; exit 5"}, seconds(0)), 5);
  EXPECT_THAT(systemLog(), IsEmpty());
}

TEST_F(RealTaskTest, ATimeLimitEndsARealTool) {
  EXPECT_EQ(offTheMainThread([] { return QWTask::dataFromTask("/bin/sleep", {"60"}, seconds(0)); }), "");
  EXPECT_THAT(systemLog(), ElementsAre("Task timed out. Terminating..."));
}

TEST_F(RealTaskTest, ErrorTextTakesPrecedenceOverOutput) {
  std::shared_ptr<Process> task;
  EXPECT_EQ(QWTask::dataFromTask(kShell, {"-c", "echo out; echo err >&2; echo out"}, task), "err\n");
  const auto large = QWTask::dataFromTask(kShell, {"-c", "head -c 300000 /dev/zero"}, task);
  EXPECT_EQ(large.value_or("").size(), 300000U);
}

}  // namespace
}  // namespace vantory::test
