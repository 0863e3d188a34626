#include "services/Runtime.h"

#include <atomic>
#include <functional>
#include <thread>

#include "services/messages/NotificationCenter.h"
#include "services/threads/MainThread.h"
#include "tests/services/ServicesTest.h"

namespace vantory {
namespace {

using testing::ElementsAre;

class MainThreadTest : public test::ServicesTest {
 protected:
  MainThread& main_ = MainThread::shared();
};

TEST_F(MainThreadTest, WorkRunsOnTheMainThreadWhileTheCallerWaits) {
  bool ranInline = false;
  EXPECT_TRUE(main_.runAndWait([&] { ranInline = true; }));
  EXPECT_TRUE(ranInline);

  std::atomic<int> woken = 0;
  main_.wake = [&] { ++woken; };
  std::vector<int> order;  // written on the main thread only
  std::atomic<bool> ended = false;
  std::thread worker([&] {
    EXPECT_FALSE(main_.isCurrent());
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(main_.runAndWait([&order, i] { order.push_back(i); }));
    ended = true;
    main_.notify();
  });
  main_.runUntil([&] { return ended.load(); });
  worker.join();
  EXPECT_THAT(order, ElementsAre(0, 1, 2));
  EXPECT_EQ(woken, 3);
}

TEST_F(MainThreadTest, PostedWorkRunsLaterInItsOrder) {
  std::vector<std::string> order;
  EXPECT_TRUE(main_.post([&] {
    order.push_back("first");
    main_.post([&] { order.push_back("third"); });
  }));
  std::thread([&] { EXPECT_TRUE(main_.post([&] { order.push_back("second"); })); }).join();
  EXPECT_TRUE(order.empty());
  main_.runPending();
  EXPECT_THAT(order, ElementsAre("first", "second", "third"));

  // What refused work holds may come back as it goes.
  const auto held = std::shared_ptr<void>(nullptr, [&](void*) { EXPECT_FALSE(main_.post([] {})); });
  main_.post([held = std::move(held)] {});
  main_.shutDown();
}

TEST_F(MainThreadTest, ShutDownRefusesWhatWaitsAndWhatComes) {
  std::atomic<bool> waiting = false;
  main_.wake = [&] {
    waiting = true;
    main_.notify();
  };
  bool ran = false;
  std::thread worker([&] {
    EXPECT_FALSE(main_.runAndWait([&] { ran = true; }));
    EXPECT_FALSE(main_.runAndWait([&] { ran = true; }));
  });
  while (!waiting) std::this_thread::yield();
  main_.shutDown();
  worker.join();
  main_.runPending();
  EXPECT_FALSE(ran);
}

class NotificationTest : public test::ServicesTest {
 protected:
  NotificationCenter::Observation observe(const std::string& name, const std::string& text) {
    return center_.observe(name, [this, text] { told_.push_back(text); });
  }

  NotificationCenter& center_ = NotificationCenter::shared();
  std::vector<std::string> told_;
};

TEST_F(NotificationTest, ObservationsMayBeginAndEndDuringDelivery) {
  NotificationCenter::Observation once, victim, late;
  once = center_.observe("refresh", [&] {
    told_.push_back("once");
    once.reset();
    victim.reset();
    late = observe("refresh", "late");
  });
  victim = observe("refresh", "victim");
  center_.post("refresh");
  EXPECT_THAT(told_, ElementsAre("once"));
  center_.post("refresh");
  EXPECT_THAT(told_, ElementsAre("once", "late"));
}

TEST_F(NotificationTest, EndingWaitsForADeliveryOnAnotherThread) {
  std::atomic<bool> begun = false;
  std::atomic<bool> finish = false;
  bool ran = false;  // unguarded: the end of the observation is what orders the accesses
  auto observation = center_.observe("refresh", [&] {
    begun = true;
    while (!finish) std::this_thread::yield();
    ran = true;
  });
  std::thread poster([&] { center_.post("refresh"); });
  while (!begun) std::this_thread::yield();
  finish = true;
  observation.reset();
  EXPECT_TRUE(ran);
  poster.join();
}

}  // namespace
}  // namespace vantory
