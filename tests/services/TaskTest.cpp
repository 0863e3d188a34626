#include "services/QWTask.h"

#include <atomic>
#include <csignal>
#include <thread>

#include "services/MainThread.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using std::chrono::seconds;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kShell = "/bin/sh";

class TaskTest : public ServicesTest {
 protected:
  TaskTest() { MainThread::shared(); }
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
};

TEST_F(TaskTest, RefusesWhatIsNoTool) {
  const std::string plain = home_ / "plain%@file";
  const std::string application = home_ / "Some.app";
  writeFile(plain, "#!/bin/sh\n");
  writeFile(application + "/Contents/Info.plist", "");
  EXPECT_FALSE(QWTask::runTask(plain, {}));
  EXPECT_FALSE(QWTask::runTaskAndReturn(application, {}));
  EXPECT_EQ(QWTask::terminationCodeFromTask("/missing", {}), -1);
  EXPECT_THAT(systemLog(),
              ElementsAre("Error: " + plain + " is not executable", "Error: " + application + " is not executable",
                          "Error: /missing is not executable"));
  EXPECT_THAT(logged(), Contains("Error: " + plain + " is not executable"));
}

TEST_F(TaskTest, ATimeLimitEndsTheToolAndSaysSo) {
  const auto code = [] { return QWTask::terminationCodeFromTask("/bin/sleep", {"60"}, seconds(0)); };
  EXPECT_EQ(offTheMainThread(code), 128 + 15);
  EXPECT_EQ(offTheMainThread([] { return QWTask::dataFromTask("/bin/sleep", {"60"}, seconds(0)); }), "");
  EXPECT_THAT(systemLog(), ElementsAre("Task timed out. Terminating...", "Task timed out. Terminating..."));
  EXPECT_THAT(logged(), Contains("Task /bin/sleep timed out. Terminating...").Times(2));
}

TEST_F(TaskTest, ATimeLimitHoldsThoughWhatTheToolStartedKeepsItsOutputOpen) {
  const auto output = offTheMainThread([] {
    return QWTask::dataFromTask(kShell, {"-c", "sleep 60 & echo $!; wait"}, seconds(1));
  });
  const pid_t grandchild = std::stoi(output.value_or("0"));
  ASSERT_GT(grandchild, 0);
  EXPECT_EQ(kill(grandchild, SIGKILL), 0);
}

TEST_F(TaskTest, ATimeLimitNeverActsOnTheMainThread) {
  EXPECT_EQ(QWTask::terminationCodeFromTask(kShell, {"-c", "sleep 0.1; exit 5"}, seconds(0)), 5);
  EXPECT_THAT(systemLog(), IsEmpty());
}

TEST_F(TaskTest, ErrorTextTakesPrecedenceOverOutput) {
  std::shared_ptr<Process> task;
  EXPECT_EQ(QWTask::dataFromTask(kShell, {"-c", "echo out; echo err >&2; echo out"}, task), "err\n");
  const auto large = QWTask::dataFromTask(kShell, {"-c", "head -c 300000 /dev/zero"}, task);
  EXPECT_EQ(large.value_or("").size(), 300000U);
}

}  // namespace
}  // namespace vantory::test
