#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <map>
#include <utility>

#include <sys/resource.h>

#include "xel/platform/StandardRunLoop.h"

namespace xel {

/// What some functions took of their thread.
struct TurnCosts {
  int turns = 0;
  /// Those in which the thread waited for something.
  int waits = 0;
  /// Seconds of the longest; where it did not wait, without those in which other threads ran.
  double longest = 0;

  void add(const TurnCosts& more) {
    turns += more.turns;
    waits += more.waits;
    longest = std::max(longest, more.longest);
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
  /// The number of the function that is running, from 1.
  int turn() const { return costs_.turns; }
  const TurnCosts& costs() const { return costs_; }

 private:
  struct Moment {
    double time = 0, processorTime = 0;
    long waits = 0;

    static Moment now() {
      timespec processorTime{};
      clock_gettime(CLOCK_THREAD_CPUTIME_ID, &processorTime);
      rusage usage{};
      getrusage(RUSAGE_THREAD, &usage);
      const auto time = std::chrono::steady_clock::now().time_since_epoch();
      return {std::chrono::duration<double>(time).count(),
              static_cast<double>(processorTime.tv_sec) +
                  static_cast<double>(processorTime.tv_nsec) / 1e9,
              usage.ru_nvcsw};
    }
  };

  void takeTurn(const std::function<void()>& function) {
    ++costs_.turns;
    const auto begun = Moment::now();
    function();
    const auto ended = Moment::now();
    const bool hasWaited = ended.waits != begun.waits;
    costs_.add({0, hasWaited ? 1 : 0,
                hasWaited ? ended.time - begun.time : ended.processorTime - begun.processorTime});
  }

  StandardRunLoop loop_;
  std::function<bool()> isDone_;
  std::atomic<int> posted_ = 0;
  std::map<TimerID, std::function<void()>> timers_;
  TimerID lastTimer_ = 0;
  TurnCosts costs_;
};

}  // namespace xel
