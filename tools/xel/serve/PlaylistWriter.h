#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace xel::serve {

/// A timed metadata text and where it lies, in seconds from the start of its stream.
struct StreamText {
  double time = 0;
  std::string value;
};

/// A segment as a playlist has it.
struct PlaylistSegment {
  /// Seconds; positive.
  double duration = 0;
  std::string uri;
  /// Its media do not continue those before it.
  bool isDiscontinuity = false;
};

/// Writes HLS media playlists (RFC 8216) of a stream's segments.
///
/// A text becomes a line `#XEL-TXXX:OFFSET,VALUE` before its segment, OFFSET in seconds. Times are
/// rounded to milliseconds.
class PlaylistWriter {
 public:
  /// Texts must be in order of time; those past the end, and those that hold a line end, which a
  /// playlist cannot carry, are left out.
  PlaylistWriter(std::vector<PlaylistSegment> segments, std::vector<StreamText> texts);
  /// Cuts a stream into segments "segment-N.ts" of `segmentSeconds`.
  /// @param duration of the stream, in seconds; positive.
  PlaylistWriter(double duration, std::vector<StreamText> texts);

  static constexpr double segmentSeconds = 2;
  std::size_t segmentCount() const noexcept { return segments_.size(); }

  /// The segments from `first` up to but not including `end`; with the end mark if they are final.
  std::string playlist(std::size_t first, std::size_t end, bool isFinal) const;
  /// With the end mark when no segment follows.
  std::string playlist(std::size_t first, std::size_t end) const {
    return playlist(first, end, end == segmentCount());
  }
  std::string wholePlaylist() const { return playlist(0, segmentCount()); }

 private:
  std::vector<PlaylistSegment> segments_;
  std::vector<StreamText> texts_;
};

}  // namespace xel::serve
