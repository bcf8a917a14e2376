#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace xel {

/// The header of a PES packet, the unit in which a transport stream carries a stream's data.
/// Timestamps have 33 bits and count 90,000 in a second.
struct PESHeader {
  /// A header is not larger.
  static constexpr std::size_t largest = 9 + 255;

  /// Absent if the bytes do not begin with a header, or not with the whole of it.
  static std::optional<PESHeader> read(std::span<const std::byte> bytes);

  std::size_t size = 0;
  /// The bytes that follow the header; absent if they go on until the next packet.
  std::optional<std::size_t> bodySize;
  std::optional<std::uint64_t> presentationTimestamp;
  std::optional<std::uint64_t> decodingTimestamp;
};

}  // namespace xel
