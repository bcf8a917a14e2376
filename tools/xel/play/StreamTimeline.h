#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "play/MediaPlaylist.h"

namespace xel {

/// A stream laid out on stream time from the playlists that have been seen of it, one after the
/// other. Time 0 is the start of the first segment of the first playlist. All times in seconds.
///
/// Sums are kept to the nanosecond, so that durations written as decimals add up to the decimal
/// that a reader expects.
class StreamTimeline {
 public:
  /// Adds the segments that are not known yet, told apart by their sequence numbers.
  /// @return how many segments passed by between two playlists, unseen; they take no time.
  std::uint64_t append(const MediaPlaylist& playlist);

  /// The end of the last segment that is known.
  double end() const noexcept { return end_; }
  /// No segment will follow.
  bool isFinished() const noexcept { return isFinished_; }
  double targetDuration() const noexcept { return targetDuration_; }
  /// Ordered by time; those of one moment in playlist order.
  const std::multimap<double, std::string>& texts() const noexcept { return texts_; }

 private:
  std::optional<std::uint64_t> nextSequence_;
  double end_ = 0;
  bool isFinished_ = false;
  double targetDuration_ = 0;
  std::multimap<double, std::string> texts_;
};

}  // namespace xel
