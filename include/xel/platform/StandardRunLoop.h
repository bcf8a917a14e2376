#pragma once

#include <memory>

#include "xel/platform/RunLoop.h"

namespace xel {

/// A run loop on the standard library alone, for hosts that have no event loop of their own.
///
/// The thread that calls `run` is the main thread; until the first `run` it is the one that made
/// the loop.
class XEL_EXPORT StandardRunLoop final : public RunLoop {
 public:
  /// The loop of the process, which `Platform::makeDefault` uses. Made at the first call.
  static const std::shared_ptr<StandardRunLoop>& main();

  StandardRunLoop();
  ~StandardRunLoop() override;

  /// Runs posted functions and timers until `stop`; not reentrant.
  void run();
  /// Makes `run` return after the function that is running, or at once if it has not been called
  /// yet. What is still posted stays posted. Threads: any.
  void stop();

  void post(std::function<void()> function) override;
  TimerID every(double seconds, std::function<void()> function) override;
  void cancel(TimerID timer) override;
  bool isMain() const override;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace xel
