// Output as it comes, and how such a run ends.
#include <atomic>
#include <thread>

#include "services/QWTask.h"
#include "tests/services/ServicesTest.h"

namespace vantory::test {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;

void waitFor(const std::function<bool()>& condition) {
  while (!condition()) std::this_thread::sleep_for(1ms);
}

class AsyncTaskTest : public ServicesTest {
 protected:
  // Adds up the pieces, and counts the empty ones.
  QWTask::AsyncDelegate gather() {
    return [this](const std::string& data, QWTask&, const std::any&) {
      output_ += data;
      if (data.empty()) ++ends_;
    };
  }
  void run(const std::string& script, QWTask::AsyncDelegate delegate) {
    task_->asyncDataFromTask("/bin/sh", {"-c", script}, std::move(delegate));
  }

  std::string output_;  // complete once there was an end
  std::atomic<int> ends_ = 0;
  std::unique_ptr<QWTask> task_ = std::make_unique<QWTask>();
};

TEST_F(AsyncTaskTest, HandsOnWhatTheToolPrintsAndThenItsEnd) {
  const auto mine = std::make_shared<int>(7);
  task_->asyncDataFromTask(
      "/bin/sh", {"-c", "echo error >&2; head -c 300000 /dev/zero"},
      [&, mine](const std::string& data, QWTask& task, const std::any& object) {
        EXPECT_EQ(&task, task_.get());
        EXPECT_EQ(std::any_cast<std::shared_ptr<int>>(object), mine);
        gather()(data, task, object);
      },
      mine);
  waitFor([&] { return ends_ == 1 && mine.use_count() == 1; });  // delegate and object are let go of
  EXPECT_EQ(output_, std::string(300000, '\0'));
  EXPECT_EQ(task_->theTask(), nullptr);
}

TEST_F(AsyncTaskTest, AToolThatCannotBeStartedOnlyEnds) {
  task_->asyncDataFromTask("/missing/tool", {}, gather());
  waitFor([&] { return ends_ == 1; });
  task_.reset();
  EXPECT_EQ(ends_, 1);
  EXPECT_THAT(output_, IsEmpty());
  EXPECT_THAT(logged(), testing::IsSupersetOf(
                            {"Error: /missing/tool is not executable", "Unable to launch async task - no task set"}));
}

TEST_F(AsyncTaskTest, TheDelegateMayDestroyTheTask) {
  std::atomic<bool> destroyed = false;
  const auto held = std::make_shared<int>();
  run("yes", [&, held](const std::string&, QWTask&, const std::any&) {
    task_.reset();
    EXPECT_FALSE(destroyed.exchange(true));
  });
  waitFor([&] { return destroyed && held.use_count() == 1; });
}

TEST_F(AsyncTaskTest, DestroyingTheTaskWaitsForTheDelegate) {
  std::atomic<bool> called = false;
  bool left = false;  // unguarded: the end of the task is what orders the accesses
  run("yes", [&](const std::string&, QWTask& task, const std::any&) {
    EXPECT_FALSE(called);  // never again after it ended the run
    task.terminateAsyncTask();
    called = true;
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(task.theTask(), nullptr);
    left = true;
  });
  waitFor([&] { return called.load(); });
  task_.reset();
  EXPECT_TRUE(left);
}

TEST_F(AsyncTaskTest, CanBeDestroyedAtAnyMoment) {
  for (int round = 0; round < 40; ++round) {
    bool destroyed = false;
    run("echo a; sleep 0.005; echo b", [&](const std::string&, QWTask&, const std::any&) { EXPECT_FALSE(destroyed); });
    std::this_thread::sleep_for(std::chrono::microseconds(round * 300));
    task_ = std::make_unique<QWTask>();
    destroyed = true;
  }
}

}  // namespace
}  // namespace vantory::test
