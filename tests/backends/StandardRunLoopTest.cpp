#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "xel/platform/StandardRunLoop.h"

namespace xel {
namespace {

struct StandardRunLoopTest : testing::Test {
  StandardRunLoop loop;
  std::string notes;

  std::function<void()> note(const char* what) {
    return [this, what] { notes += what; };
  }
  /// Runs what has been posted so far.
  void drain() {
    loop.post([this] { loop.stop(); });
    loop.run();
  }
};

/// Keeps the thread busy.
void spin(std::chrono::milliseconds time) {
  const auto until = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < until) {
  }
}

TEST_F(StandardRunLoopTest, RunsInOrderAlwaysLaterAndKeepsTheRestWhenStopped) {
  loop.post([this] {
    loop.post(note("3"));
    notes += "1";
  });
  loop.post(note("2"));
  loop.stop();
  loop.run();
  EXPECT_EQ(notes, "") << "a stop before run was lost";
  drain();
  EXPECT_EQ(notes, "12");
  drain();
  EXPECT_EQ(notes, "123");
}

TEST_F(StandardRunLoopTest, TakesFunctionsFromManyThreadsInEachOnesOrderOnTheMainOne) {
  std::vector<std::vector<int>> seen(4);
  std::vector<std::thread> threads;
  std::size_t ended = 0;
  for (auto& mine : seen) {
    threads.emplace_back([&] {
      for (int i = 0; i < 1000; ++i) loop.post([&mine, i] { mine.push_back(i); });
      loop.post([&] { ++ended == seen.size() ? loop.stop() : void(); });
    });
  }
  EXPECT_TRUE(loop.isMain());
  std::thread([this] {
    loop.run();
    EXPECT_TRUE(loop.isMain());
  }).join();
  EXPECT_FALSE(loop.isMain()) << "the thread that ran it last is the main one";
  for (auto& thread : threads) thread.join();
  for (const auto& mine : seen) {
    EXPECT_EQ(mine.size(), 1000u);
    EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
  }
}

TEST_F(StandardRunLoopTest, TimersRepeatUntilCancelledAlsoByThemselves) {
  RunLoop::TimerID timer = 0;
  auto alive = std::make_shared<int>(0);
  const std::weak_ptr<int> watch = alive;
  timer = loop.every(0.001, [&, alive = std::move(alive)] {
    if (++*alive < 3) return;
    loop.cancel(timer);
    loop.cancel(timer);
    loop.cancel(timer + 1);
    notes += watch.expired() ? "gone" : std::to_string(*alive);
    loop.stop();
  });
  EXPECT_NE(timer, 0u);
  loop.run();
  EXPECT_EQ(notes, "3");
  EXPECT_TRUE(watch.expired());
}

TEST_F(StandardRunLoopTest, SkipsMissedFirings) {
  // While the first firing holds the loop up, some 30 others fall due. If they were made up for,
  // they would take turns with the posted functions.
  int firings = 0;
  int steps = 0;
  std::function<void()> step = [&] { ++steps < 20 ? loop.post(step) : loop.stop(); };
  loop.every(0.01, [&] {
    if (++firings > 1) return;
    spin(std::chrono::milliseconds(300));
    loop.post(step);
  });
  loop.run();
  EXPECT_LT(firings, 15);
}

TEST_F(StandardRunLoopTest, NeitherTimersNorPostedFunctionsStarveTheOther) {
  std::function<void()> again = [&] { loop.post(again); };
  loop.post(again);
  loop.every(0.001, [&] { loop.stop(); });
  loop.run();

  // A timer that is always due.
  StandardRunLoop busy;
  busy.every(0.001, [&] {
    busy.post([&] { busy.stop(); });
    spin(std::chrono::milliseconds(2));
  });
  busy.run();
}

TEST_F(StandardRunLoopTest, TakesAnyInterval) {
  int fast = 0;
  for (const double seconds : {0.0, 1e-9, std::nan(""), -HUGE_VAL}) {
    loop.every(seconds, [&] { ++fast; });
  }
  for (const double seconds : {1e12, HUGE_VAL}) loop.every(seconds, note("far"));
  while (fast < 8) drain();
  EXPECT_EQ(notes, "");
}

TEST_F(StandardRunLoopTest, ReleasesWhatIsLeftWhenItEnds) {
  auto doomed = std::make_unique<StandardRunLoop>();
  auto* raw = doomed.get();
  const auto atEnd = [](auto function) {
    return [owned = std::shared_ptr<void>(nullptr, function)] { FAIL() << "run"; };
  };
  const auto timer = raw->every(1000, atEnd([&](void*) { raw->post(note("never")); }));
  raw->post(atEnd([&](void*) {
    raw->cancel(timer);
    raw->post(atEnd([&](void*) { notes += "released"; }));
  }));
  doomed.reset();
  EXPECT_EQ(notes, "released");
}

}  // namespace
}  // namespace xel
