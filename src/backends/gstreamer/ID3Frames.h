#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "xel/platform/MediaPlayer.h"

namespace xel {

/// What an ID3 tag of a stream says.
struct ID3Frames {
  /// The text frames, in order, each under its own identifier. The value is the frame's text, for
  /// "TXXX" without its description; several texts are joined by "/". A "TXXX" frame with a
  /// description only has that for its value.
  std::vector<MediaMetadataItem> texts;
  /// The MPEG timestamp, in the low 33 bits, of the audio that follows (RFC 8216, section 3.4).
  std::optional<std::uint64_t> timestamp;

  /// Reads the tag that begins here. Of one that is cut short, the frames that are whole count.
  static ID3Frames read(std::span<const std::byte> tag);
};

}  // namespace xel
