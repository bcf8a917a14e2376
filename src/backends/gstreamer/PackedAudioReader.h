#pragma once

#include <cstddef>
#include <deque>
#include <span>
#include <vector>

#include "xel/platform/MediaPlayer.h"

#include "backends/gstreamer/MediaClock.h"
#include "backends/gstreamer/SegmentReader.h"

namespace xel {

/// Finds the ID3 tags between the frames of packed audio (RFC 8216, section 3.4).
///
/// A tag with a timestamp sets the time; from there on it is counted by the frames, which works for
/// AAC in ADTS only. A tag without one belongs to what follows it.
class PackedAudioReader final : public SegmentReader {
 public:
  /// @param runStart seconds of stream time at which the audio begins.
  explicit PackedAudioReader(double runStart) : time_(runStart) {}

  std::size_t take(std::span<const std::byte> bytes, const TagFound& found) override;

 private:
  void readTag(std::span<const std::byte> tag, const TagFound& found);
  void releaseWaiting(const TagFound& found);

  /// Seconds of stream time of what comes next.
  double time_;
  MediaClock clock_;
  /// Whether a tag or a frame has just ended, so that another one is to begin.
  bool isInSync_ = true;
  /// Tags for which it is not yet known what follows.
  std::deque<std::vector<MediaMetadataItem>> waiting_;
};

}  // namespace xel
