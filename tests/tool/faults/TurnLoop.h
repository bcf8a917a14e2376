#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <map>
#include <utility>

#include "xel/platform/StandardRunLoop.h"

namespace xel {

/// The longest of some functions, by each measure.
struct TurnCost {
  double processorSeconds = 0;
  double seconds = 0;

  void raiseTo(const TurnCost& other) {
    processorSeconds = std::max(processorSeconds, other.processorSeconds);
    seconds = std::max(seconds, other.seconds);
  }
};

/// A main run loop that counts and measures the functions which it runs. Its timers fire when the
/// test says so.
class TurnLoop final : public RunLoop {
 public:
  /// @param isDone asked whenever no function is left to run.
  void runUntil(std::function<bool()> isDone) {
    isDone_ = std::move(isDone);
    loop_.run();
  }
  void post(std::function<void()> function) override {
    ++posted_;
    loop_.post([this, function = std::move(function)] {
      takeTurn(function);
      if (--posted_ == 0 && isDone_()) loop_.stop();
    });
  }
  TimerID every(double, std::function<void()> function) override {
    timers_.emplace(++lastTimer_, std::move(function));
    return lastTimer_;
  }
  void cancel(TimerID timer) override { const auto cancelled = timers_.extract(timer); }
  bool isMain() const override { return loop_.isMain(); }

  /// Posts the functions of all timers; false when there is none.
  bool fireTimers() {
    for (const auto& [timer, function] : timers_) post(function);
    return !timers_.empty();
  }
  /// The number of the function that is running.
  int turn() const { return turn_; }
  TurnCost longest() const { return longest_; }

 private:
  void takeTurn(const std::function<void()>& function) {
    using Clock = std::chrono::steady_clock;
    ++turn_;
    const auto processorTime = [] {
      timespec time{};
      clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
      return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
    };
    const auto processorBegun = processorTime();
    const auto begun = Clock::now();
    function();
    longest_.raiseTo({processorTime() - processorBegun,
                      std::chrono::duration<double>(Clock::now() - begun).count()});
  }

  StandardRunLoop loop_;
  std::function<bool()> isDone_;
  std::atomic<int> posted_ = 0;
  std::map<TimerID, std::function<void()>> timers_;
  TimerID lastTimer_ = 0;
  int turn_ = 0;
  TurnCost longest_;
};

}  // namespace xel
