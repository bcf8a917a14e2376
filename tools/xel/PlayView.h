#pragma once

#include <memory>

#include "xel/platform/Log.h"

#include "PlayEvent.h"

namespace xel {

/// How far a stream has been played.
struct PlayProgress {
  /// Seconds of stream time.
  double position;
  /// The end of the stream as far as it is known, in seconds.
  double knownEnd;
  /// Whether `knownEnd` is final.
  bool isEndFinal;
};

/// Shows a session to whoever started it. Threads: main run loop.
class PlayView {
 public:
  virtual ~PlayView() = default;
  /// @param time the display's stream time, in seconds.
  virtual void show(double time, const PlayEvent& event) = 0;
  virtual void showProgress(const PlayProgress&) {}
  /// Shows the state again, after the terminal changed its size.
  virtual void redraw() {}
  /// Where the library's log goes while this view is up.
  virtual std::shared_ptr<Log> log() { return makeStandardErrorLog(); }
};

}  // namespace xel
