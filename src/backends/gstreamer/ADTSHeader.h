#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace xel {

/// The header of one frame of AAC audio in an ADTS stream.
struct ADTSHeader {
  static constexpr std::size_t size = 7;

  /// Absent if the bytes do not begin with one.
  static std::optional<ADTSHeader> read(std::span<const std::byte> bytes);

  /// Bytes, with the header; at most 8,191.
  std::size_t frameSize;
  /// Seconds.
  double duration;
};

}  // namespace xel
