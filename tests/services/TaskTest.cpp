#include "services/tools/QWTask.h"

#include <atomic>
#include <csignal>
#include <future>
#include <optional>
#include <semaphore>
#include <thread>

#include "services/messages/NotificationCenter.h"
#include "services/threads/MainThread.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

constexpr const char* kShell = "/bin/sh";

class TaskTest : public ServicesTest {
 protected:
  TaskTest() { MainThread::shared(); }
  std::vector<std::string> systemLog() const { return fakes_.systemLog.messages(); }

  // What the work answers on a thread of its own, while the main thread serves whoever hands it work.
  template <class Work>
  static auto offTheMainThread(Work work) {
    std::optional<decltype(work())> answer;
    std::thread worker([&] {
      auto made = work();
      MainThread::shared().runAndWait([&] { answer = std::move(made); });
    });
    MainThread::shared().runUntil([&] { return answer.has_value(); });
    worker.join();
    return *answer;
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
  const auto code = [] { return QWTask::terminationCodeFromTask("/bin/sleep", {"60"}, 0s); };
  EXPECT_EQ(offTheMainThread(code), 128 + 15);
  EXPECT_EQ(offTheMainThread([] { return QWTask::dataFromTask("/bin/sleep", {"60"}, 0s); }), "");
  EXPECT_THAT(systemLog(), ElementsAre("Task timed out. Terminating...", "Task timed out. Terminating..."));
  EXPECT_THAT(logged(), Contains("Task /bin/sleep timed out. Terminating...").Times(2));
}

TEST_F(TaskTest, ATimeLimitHoldsThoughWhatTheToolStartedKeepsItsOutputOpen) {
  const auto output = offTheMainThread([] {
    return QWTask::dataFromTask(kShell, {"-c", "sleep 60 & echo $!; wait"}, 1s);
  });
  const pid_t grandchild = std::stoi(output.value_or("0"));
  ASSERT_GT(grandchild, 0);
  EXPECT_EQ(kill(grandchild, SIGKILL), 0);
}

TEST_F(TaskTest, ATimeLimitNeverActsOnTheMainThread) {
  EXPECT_EQ(QWTask::terminationCodeFromTask(kShell, {"-c", "sleep 0.1; exit 5"}, 0s), 5);
  EXPECT_THAT(systemLog(), IsEmpty());
}

TEST_F(TaskTest, ErrorTextTakesPrecedenceOverOutput) {
  std::shared_ptr<Process> task;
  EXPECT_EQ(QWTask::dataFromTask(kShell, {"-c", "echo out; echo err >&2; echo out"}, task), "err\n");
}

// Something that is told of when nobody holds it any more.
std::shared_ptr<int> held(std::promise<void>& letGo) {
  return {new int(7), [&letGo](const int* number) {
            delete number;
            letGo.set_value();
          }};
}

// Output as it comes, and how such a run ends.
class AsyncTaskTest : public ServicesTest {
 protected:
  // Adds up the pieces, and counts the empty ones.
  QWTask::AsyncDelegate gather() {
    return [this](const std::string& data, QWTask&, const std::any&) {
      output_ += data;
      if (data.empty()) ++ends_;
      ends_.notify_all();
    };
  }
  void run(const std::string& script, QWTask::AsyncDelegate delegate) {
    task_->asyncDataFromTask(kShell, {"-c", script}, std::move(delegate));
  }

  std::string output_;  // complete once there was an end
  std::atomic<int> ends_ = 0;
  std::unique_ptr<QWTask> task_ = std::make_unique<QWTask>();
};

TEST_F(AsyncTaskTest, HandsOnWhatTheToolPrintsAndThenItsEnd) {
  std::string posted;
  const auto posts = NotificationCenter::shared().observe("QWAsyncTaskDataNotification", [&](const UserInfo& info) {
    posted += info.find(QWTask::kPieceKey)->asData()->bytes;
  });
  std::promise<void> letGo;
  auto mine = held(letGo);
  task_->asyncDataFromTask(
      kShell, {"-c", "echo error >&2; head -c 300000 /dev/zero"},
      [&, mine](const std::string& data, QWTask& task, const std::any& object) {
        EXPECT_EQ(&task, task_.get());
        EXPECT_EQ(std::any_cast<std::shared_ptr<int>>(object), mine);
        gather()(data, task, object);
      },
      mine);
  mine.reset();
  letGo.get_future().wait();  // by the delegate, and as the object
  EXPECT_EQ(ends_, 1);
  EXPECT_EQ(output_, std::string(300000, '\0'));
  EXPECT_EQ(posted, output_);
  EXPECT_EQ(task_->theTask(), nullptr);
}

TEST_F(AsyncTaskTest, AToolThatCannotBeStartedOnlyEnds) {
  task_->asyncDataFromTask("/missing/tool", {}, gather());
  ends_.wait(0);
  task_.reset();
  EXPECT_EQ(ends_, 1);
  EXPECT_THAT(output_, IsEmpty());
  EXPECT_THAT(logged(),
              IsSupersetOf({"Error: /missing/tool is not executable", "Unable to launch async task - no task set"}));
}

TEST_F(AsyncTaskTest, TheDelegateMayDestroyTheTask) {
  std::atomic<int> calls = 0;
  std::promise<void> letGo;
  run("yes", [&, mine = held(letGo)](const std::string&, QWTask&, const std::any&) {
    task_.reset();
    ++calls;
  });
  letGo.get_future().wait();
  EXPECT_EQ(calls, 1);
}

TEST_F(AsyncTaskTest, DestroyingTheTaskWaitsForTheDelegate) {
  std::binary_semaphore called{0};
  std::binary_semaphore destroying{0};
  bool left = false;  // unguarded: the end of the task is what orders the accesses
  run("yes", [&](const std::string&, QWTask& task, const std::any&) {
    EXPECT_FALSE(left);  // never again after it ended the run
    task.terminateAsyncTask();
    called.release();
    destroying.acquire();
    EXPECT_EQ(task.theTask(), nullptr);
    left = true;
  });
  called.acquire();
  destroying.release();
  task_.reset();
  EXPECT_TRUE(left);
}

// Before it hands anything on, while the tool runs, and after the end.
TEST_F(AsyncTaskTest, CanBeDestroyedAtAnyMoment) {
  for (const int pieces : {0, 1, 2}) {
    std::atomic<int> seen = 0;
    bool destroyed = false;
    run(pieces == 1 ? "echo a; exec sleep 60" : "echo a", [&](const std::string&, QWTask&, const std::any&) {
      EXPECT_FALSE(destroyed);
      ++seen;
      seen.notify_all();
    });
    for (int now = seen; now < pieces; now = seen) seen.wait(now);
    task_ = std::make_unique<QWTask>();
    destroyed = true;
  }
}

}  // namespace
}  // namespace vantory::test
