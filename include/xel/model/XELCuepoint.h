#pragma once

#include <memory>
#include <string>

#include "xel/platform/Export.h"

/// The span of one ad break in stream time, and whether the viewer has been through it.
///
/// Times are seconds of stream time (ads included), kept as given: no rounding, no check
/// that the start lies before the end.
/// Ownership: shared; the host and the VOD monitor see the same object. Not copyable.
/// Threads: main run loop only. Errors: no operation fails.
class XEL_EXPORT XELCuepoint final {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// A cue point that has not been played. Never null.
  static std::shared_ptr<XELCuepoint> initWithStartTime_endTime(double startTime, double endTime);
  XELCuepoint(Token, double startTime, double endTime) noexcept
      : startTime_(startTime), endTime_(endTime) {}
  XELCuepoint(const XELCuepoint&) = delete;
  XELCuepoint& operator=(const XELCuepoint&) = delete;

  double startTime() const noexcept { return startTime_; }
  double endTime() const noexcept { return endTime_; }
  bool isPlayed() const noexcept { return played_; }
  void setPlayed(bool played) noexcept { played_ = played; }

  /// Exact times and the played flag: a played cue point differs from an unplayed one with the
  /// same span.
  bool isEqual(const XELCuepoint& other) const noexcept;

  /// Such as "Start: 10.000000, End: 40.000000, Played: No".
  std::string description() const;

 private:
  double startTime_;
  double endTime_;
  bool played_ = false;
};
