#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "xel/platform/Export.h"
#include "xel/platform/RunLoop.h"

namespace xel::simulation {

/// A main run loop on a virtual clock: time passes only in `advance`, and nothing ever waits.
///
/// The thread that makes the loop is the main thread. Functions may call `advance` and
/// `runUntilIdle` themselves. The clock counts whole nanoseconds, so that many small steps make
/// exactly one large one; spans are rounded to them and cut off at 100 years.
class XEL_EXPORT VirtualRunLoop final : public RunLoop {
 public:
  VirtualRunLoop();
  ~VirtualRunLoop() override;

  /// Seconds since the loop was made.
  double now() const noexcept { return static_cast<double>(now_) / 1e9; }

  /// Runs posted functions until none is left. No time passes.
  void runUntilIdle();

  /// Lets time pass, and runs what is posted or falls due meanwhile: in order of time, and at the
  /// same time in the order in which it was set up. Every function sees the `now` it is due at.
  /// @param seconds not negative; less counts as 0.
  void advance(double seconds);

  /// Runs `function` once, `seconds` from now. 0 or less is a `post`.
  void after(double seconds, std::function<void()> function);

  /// The repeating timers that have not been cancelled.
  std::size_t timerCount() const;

  /// Releases every posted function and every timer without running it.
  void clear();

  void post(std::function<void()> function) override;
  TimerID every(double seconds, std::function<void()> function) override;
  void cancel(TimerID timer) override;
  bool isMain() const override;

 private:
  using Function = std::shared_ptr<std::function<void()>>;
  using Nanoseconds = std::int64_t;
  struct Timer {
    Nanoseconds due;
    Nanoseconds interval;  ///< 0 for a timer that fires once.
    Function function;
  };
  using Timers = std::map<TimerID, Timer>;

  TimerID addTimer(Timer timer);
  bool runOnePosted();
  Timers::iterator earliest();
  void fire(Timers::iterator timer);

  const std::thread::id mainThread_;
  Nanoseconds now_ = 0;
  TimerID lastTimer_ = 0;
  Timers timers_;
  std::mutex mutex_;
  std::deque<std::function<void()>> posted_;  ///< Guarded by mutex_.
};

}  // namespace xel::simulation
