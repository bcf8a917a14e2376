#include "backends/gstreamer/MP4Box.h"

#include <limits>

#include "backends/gstreamer/BigEndian.h"

namespace xel {

std::optional<MP4Box> MP4Box::read(std::span<const std::byte> bytes) {
  constexpr std::size_t shortHeader = 8;
  if (bytes.size() < shortHeader) return std::nullopt;
  MP4Box box{static_cast<std::uint32_t>(bigEndianAt<4>(bytes, 4)), shortHeader,
             bigEndianAt<4>(bytes, 0)};
  if (box.size == 0) {
    box.size = std::numeric_limits<std::size_t>::max();
  } else if (box.size == 1) {
    if (bytes.size() < largestHeader) return std::nullopt;
    box.headerSize = largestHeader;
    box.size = bigEndianAt<8>(bytes, shortHeader);
  }
  if (box.size < box.headerSize) return std::nullopt;
  return box;
}

}  // namespace xel
