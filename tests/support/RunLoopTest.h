#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "xel/platform/RunLoop.h"

namespace xel {

/// What every run loop must do. `Runner` makes a loop and can `run` and `stop` it.
template <typename Runner>
struct RunLoopTest : testing::Test {
  Runner runner;
  RunLoop& loop = *runner.loop;
  std::string notes;

  std::function<void()> note(const char* what) {
    return [this, what] { notes += what; };
  }
  /// Runs what has been posted so far.
  void drain() {
    loop.post([this] { runner.stop(); });
    runner.run();
  }
};

TYPED_TEST_SUITE_P(RunLoopTest);

/// Keeps the thread busy.
inline void spin(std::chrono::milliseconds time) {
  const auto until = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < until) {
  }
}

TYPED_TEST_P(RunLoopTest, RunsInOrderAlwaysLaterAndKeepsTheRestWhenStopped) {
  this->loop.post([this] {
    this->loop.post(this->note("3"));
    this->notes += "1";
  });
  this->loop.post(this->note("2"));
  this->drain();
  EXPECT_EQ(this->notes, "12");
  this->drain();
  EXPECT_EQ(this->notes, "123");
}

TYPED_TEST_P(RunLoopTest, TimersRepeatUntilCancelledAlsoByThemselves) {
  RunLoop::TimerID timer = 0;
  auto alive = std::make_shared<int>(0);
  const std::weak_ptr<int> watch = alive;
  timer = this->loop.every(0.001, [&, alive = std::move(alive)] {
    if (++*alive < 3) return;
    this->loop.cancel(timer);
    this->loop.cancel(timer);
    this->loop.cancel(timer + 1);
    this->notes += watch.expired() ? "gone" : std::to_string(*alive);
    this->runner.stop();
  });
  EXPECT_NE(timer, 0u);
  this->runner.run();
  EXPECT_EQ(this->notes, "3");
  EXPECT_TRUE(watch.expired());
}

TYPED_TEST_P(RunLoopTest, SkipsMissedFirings) {
  // While the first firing holds the loop up, some 30 others fall due. If they were made up for,
  // they would take turns with the posted functions.
  int firings = 0;
  int steps = 0;
  std::function<void()> step = [&] { ++steps < 20 ? this->loop.post(step) : this->runner.stop(); };
  this->loop.every(0.01, [&] {
    if (++firings > 1) return;
    spin(std::chrono::milliseconds(300));
    this->loop.post(step);
  });
  this->runner.run();
  EXPECT_LT(firings, 15);
}

TYPED_TEST_P(RunLoopTest, NeitherTimersNorPostedFunctionsStarveTheOther) {
  std::function<void()> again = [&] { this->loop.post(again); };
  this->loop.post(again);
  this->loop.every(0.001, [&] { this->runner.stop(); });
  this->runner.run();

  // A timer that is always due.
  TypeParam busy;
  busy.loop->every(0.001, [&] {
    busy.loop->post([&] { busy.stop(); });
    spin(std::chrono::milliseconds(2));
  });
  busy.run();
}

TYPED_TEST_P(RunLoopTest, TakesAnyInterval) {
  int fast = 0;
  for (const double seconds : {0.0, 1e-9, std::nan(""), -HUGE_VAL}) {
    this->loop.every(seconds, [&] { ++fast; });
  }
  for (const double seconds : {1e12, HUGE_VAL}) this->loop.every(seconds, this->note("far"));
  while (fast < 8) this->drain();
  EXPECT_EQ(this->notes, "");
}

TYPED_TEST_P(RunLoopTest, ReleasesWhatIsLeftWhenItEnds) {
  auto doomed = std::make_unique<TypeParam>();
  RunLoop* const raw = doomed->loop.get();
  const auto atEnd = [](auto function) {
    return [owned = std::shared_ptr<void>(nullptr, function)] { FAIL() << "run"; };
  };
  const auto timer = raw->every(1000, atEnd([&](void*) { raw->post(this->note("never")); }));
  raw->post(atEnd([&](void*) {
    raw->cancel(timer);
    raw->post(atEnd([&](void*) { this->notes += "released"; }));
  }));
  doomed.reset();
  EXPECT_EQ(this->notes, "released");
}

REGISTER_TYPED_TEST_SUITE_P(RunLoopTest, RunsInOrderAlwaysLaterAndKeepsTheRestWhenStopped,
                            TimersRepeatUntilCancelledAlsoByThemselves, SkipsMissedFirings,
                            NeitherTimersNorPostedFunctionsStarveTheOther, TakesAnyInterval,
                            ReleasesWhatIsLeftWhenItEnds);

}  // namespace xel
