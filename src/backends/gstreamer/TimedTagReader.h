#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "xel/platform/MediaPlayer.h"

namespace xel {

/// An ID3 tag of a stream.
struct TimedTag {
  /// Seconds of stream time.
  double time = 0;
  /// Its text frames, in order; never empty.
  std::vector<MediaMetadataItem> items;
};

/// Finds the ID3 tags in the segments of an HLS stream and tells when each is to be shown.
///
/// It reads MPEG transport streams with timed metadata, packed audio (RFC 8216, section 3.4) and
/// fragmented MP4 with event messages, and tells them apart by their first bytes. It takes whatever
/// bytes come. Not thread-safe.
class TimedTagReader {
 public:
  TimedTagReader();
  ~TimedTagReader();

  /// The next byte is the first of a segment, and its media begin at `time` seconds of stream time:
  /// after a start, a seek, a discontinuity or a change of variant. What was unfinished is dropped.
  void beginRun(double time);

  /// Takes the bytes that follow, in pieces of any size. Before the first run they are ignored.
  /// @param found is called for each tag that is complete and whose time is known, in stream order.
  void read(std::span<const std::byte> bytes, const std::function<void(TimedTag)>& found);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace xel
