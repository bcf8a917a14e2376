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

/// Cuts a stream into segments and writes HLS media playlists (RFC 8216) of them.
///
/// A text becomes a line `#XEL-TXXX:OFFSET,VALUE` before its segment, OFFSET in seconds. Times are
/// rounded to milliseconds.
class PlaylistWriter {
 public:
  /// Texts must be in order of time; those past the end, and those that hold a line end, which a
  /// playlist cannot carry, are left out.
  /// @param duration of the stream, in seconds; positive.
  PlaylistWriter(double duration, std::vector<StreamText> texts);

  static constexpr double segmentSeconds = 2;
  std::size_t segmentCount() const noexcept { return segmentCount_; }

  /// The segments from `first` up to but not including `end`; with the end mark when no segment
  /// follows.
  std::string playlist(std::size_t first, std::size_t end) const;
  std::string wholePlaylist() const { return playlist(0, segmentCount_); }

 private:
  long long milliseconds_;
  std::vector<StreamText> texts_;
  std::size_t segmentCount_;
};

}  // namespace xel::serve
