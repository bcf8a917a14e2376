#pragma once

#include <cstdint>
#include <memory>

#include "xel/display/XELVideoDisplay.h"

#include "play/PlayProgress.h"

namespace xel {

/// Told of what a stream player does, beside its display's delegate. Threads: main run loop.
class StreamPlayerObserver {
 public:
  virtual ~StreamPlayerObserver() = default;
  /// Live segments went out of the playlist before they were seen.
  virtual void playerDidMiss(std::uint64_t segments) = 0;
  /// The stream that was loaded last is at its end; nothing more is reported.
  virtual void playerDidEnd() = 0;
};

/// A player that `xel play` can play streams with: a display, and what a viewer does with a player
/// beside it. A stream that is loaded plays by itself, also when the one before it was paused.
///
/// Ownership: shared; it may be let go of inside any of its reports. Threads: main run loop.
class StreamPlayer {
 public:
  virtual ~StreamPlayer() = default;

  /// The same for the player's whole life; never null.
  virtual std::shared_ptr<XELVideoDisplay> display() = 0;
  virtual void setObserver(std::weak_ptr<StreamPlayerObserver> observer) = 0;

  /// Without content time. The position is 0 until the stream that was loaded last plays.
  virtual PlayProgress progress() const = 0;
  virtual void play() = 0;
  virtual void pause() = 0;
  /// Goes on from there, with a progress report at that time or, where the player cannot be as
  /// exact, soon after it; no report from before the jump comes later than that.
  /// @param to seconds of stream time, not negative and not beyond an end that is final.
  virtual void seek(double to) = 0;
};

}  // namespace xel
