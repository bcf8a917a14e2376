#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace xel {

/// A text that the stream delivers `offset` seconds into its segment.
struct TimedText {
  double offset = 0;
  std::string value;
};

struct MediaSegment {
  /// Seconds; finite and not negative.
  double duration = 0;
  std::vector<TimedText> texts;
};

/// What a clock needs of an HLS media playlist (RFC 8216): which segments there are and how long
/// they last, not where they lie.
struct MediaPlaylist {
  /// The number of the first segment.
  std::uint64_t mediaSequence = 0;
  /// Seconds; positive when the playlist is not finished.
  double targetDuration = 0;
  /// The end mark is there: no segment will follow.
  bool isFinished = false;
  std::vector<MediaSegment> segments;
};

struct MasterPlaylist {
  /// As it is written; may be relative to the playlist's URL.
  std::string firstVariant;
};

/// Why a text is no playlist, as the rest of a sentence.
struct PlaylistFault {
  std::string reason;
};

/// Reads a playlist, with either line end. Tags that a clock has no use for are skipped.
///
/// A line `#XEL-TXXX:OFFSET,VALUE` before a segment is a timed text of it; VALUE is everything
/// after the first comma.
std::variant<MediaPlaylist, MasterPlaylist, PlaylistFault> parsePlaylist(std::string_view text);

}  // namespace xel
