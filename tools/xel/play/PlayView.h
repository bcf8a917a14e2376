#pragma once

#include <memory>

#include "xel/platform/Log.h"

#include "play/PlayEvent.h"
#include "play/PlayProgress.h"

namespace xel {

/// Shows a session to whoever started it. Threads: main run loop.
class PlayView {
 public:
  virtual ~PlayView() = default;
  /// @param time the display's stream time, in seconds.
  virtual void show(double time, const PlayEvent& event) = 0;
  virtual void showProgress(const PlayProgress&) {}
  /// Shows the state again, after the terminal changed its size, or others have written to it.
  virtual void redraw() {}
  /// Leaves the terminal to others, until `redraw`.
  virtual void suspend() {}
  /// Where the library's log goes while this view is up.
  virtual std::shared_ptr<Log> log() { return makeStandardErrorLog(); }
};

}  // namespace xel
