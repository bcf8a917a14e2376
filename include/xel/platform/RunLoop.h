#pragma once

#include <cstdint>
#include <functional>

#include "xel/platform/Export.h"

namespace xel {

/// The host application's main run loop: the one thread on which the library lives.
///
/// Implement it over the event loop that the application already has, or use `StandardRunLoop`.
/// Functions run one at a time, on the main thread, and may post, start and cancel freely. A
/// function is kept alive while it runs, also when it cancels its own timer.
/// Errors: no operation fails; a posted function that throws ends the program.
class XEL_EXPORT RunLoop {
 public:
  /// Names a repeating timer of one loop; never 0.
  using TimerID = std::uint64_t;

  virtual ~RunLoop();

  /// Runs `function` once on the main thread, always later, in the order of posting.
  /// Threads: any.
  virtual void post(std::function<void()> function) = 0;

  /// Runs `function` every `seconds`, the first time one interval from now, on an absolute
  /// schedule: it does not drift, and firings that were missed are skipped. An interval below
  /// 1 ms, or not a number, counts as 1 ms; one above 100 years counts as 100 years.
  /// The loop owns `function` until the timer is cancelled.
  /// Threads: main run loop.
  virtual TimerID every(double seconds, std::function<void()> function) = 0;

  /// Ends a timer: its function does not run again and is released. An unknown or ended timer is
  /// ignored. Threads: main run loop.
  virtual void cancel(TimerID timer) = 0;

  /// Whether the calling thread is the one that runs the loop. Threads: any.
  virtual bool isMain() const = 0;
};

}  // namespace xel
