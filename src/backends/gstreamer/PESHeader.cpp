#include "backends/gstreamer/PESHeader.h"

#include "backends/gstreamer/BigEndian.h"

namespace xel {
namespace {

constexpr std::size_t fixedSize = 9;
constexpr std::size_t lengthEnd = 6;  ///< From here on the packet's length counts.
constexpr std::size_t timestampSize = 5;

/// 3, 15 and 15 bits, each with a marker behind them.
std::uint64_t timestampAt(std::span<const std::byte> bytes, std::size_t offset) {
  const auto bits = bigEndianAt<timestampSize>(bytes, offset);
  return (bits >> 33 & 0x7) << 30 | (bits >> 17 & 0x7FFF) << 15 | (bits >> 1 & 0x7FFF);
}

}  // namespace

std::optional<PESHeader> PESHeader::read(std::span<const std::byte> bytes) {
  if (bytes.size() < fixedSize || bigEndianAt<3>(bytes, 0) != 1) return std::nullopt;
  if ((bytes[6] & std::byte{0xC0}) != std::byte{0x80}) return std::nullopt;
  PESHeader header;
  header.size = fixedSize + std::to_integer<std::size_t>(bytes[8]);
  if (bytes.size() < header.size) return std::nullopt;
  if (const auto length = bigEndianAt<2>(bytes, 4); length != 0) {
    header.bodySize = lengthEnd + length > header.size ? lengthEnd + length - header.size : 0;
  }
  const auto timestamps = std::to_integer<unsigned>(bytes[7]) >> 6;
  if (timestamps >= 2 && header.size >= fixedSize + timestampSize) {
    header.presentationTimestamp = timestampAt(bytes, fixedSize);
  }
  if (timestamps == 3 && header.size >= fixedSize + 2 * timestampSize) {
    header.decodingTimestamp = timestampAt(bytes, fixedSize + timestampSize);
  }
  return header;
}

}  // namespace xel
