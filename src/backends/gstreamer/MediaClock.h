#pragma once

#include <cstdint>

namespace xel {

/// Turns the timestamps of MPEG streams into stream time: 33 bits that count 90,000 in a second and
/// so begin anew after 26.5 hours. Higher bits do not matter.
class MediaClock {
 public:
  /// Makes `timestamp` mean `time` seconds of stream time.
  void anchor(std::uint64_t timestamp, double time);
  bool isAnchored() const { return isAnchored_; }
  /// Seconds of stream time, once anchored. The timestamp is taken to lie within 13 hours of the
  /// one that was followed last.
  double timeOf(std::uint64_t timestamp) const;
  /// Tells how far the stream has come.
  void follow(std::uint64_t timestamp);

 private:
  std::int64_t ticksSinceAnchor(std::uint64_t timestamp) const;

  bool isAnchored_ = false;
  double anchorTime_ = 0;
  std::uint64_t lastTimestamp_ = 0;
  /// The ticks from the anchor to the last timestamp.
  std::int64_t lastTicks_ = 0;
};

}  // namespace xel
