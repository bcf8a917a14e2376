#include "backends/gstreamer/ADTSHeader.h"

#include <array>

#include "backends/gstreamer/BigEndian.h"

namespace xel {
namespace {

constexpr double samplesPerBlock = 1'024;
constexpr std::array samplesPerSecond{96'000, 88'200, 64'000, 48'000, 44'100, 32'000, 24'000,
                                      22'050, 16'000, 12'000, 11'025, 8'000,  7'350};

}  // namespace

std::optional<ADTSHeader> ADTSHeader::read(std::span<const std::byte> bytes) {
  if (bytes.size() < size) return std::nullopt;
  const auto bits = bigEndianAt<size>(bytes, 0);
  const auto rate = static_cast<std::size_t>(bits >> 34 & 0xF);
  const auto frameSize = static_cast<std::size_t>(bits >> 13 & 0x1FFF);
  // The synchronisation bits, and two more that tell ADTS from other MPEG audio.
  const bool isADTS = (bits >> 40 & 0xFFF6) == 0xFFF0;
  if (!isADTS || rate >= samplesPerSecond.size() || frameSize < size) return std::nullopt;
  const auto blocks = static_cast<double>((bits & 0x3) + 1);
  return ADTSHeader{frameSize, blocks * samplesPerBlock / samplesPerSecond[rate]};
}

}  // namespace xel
