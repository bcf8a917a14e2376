#include "backends/gstreamer/TransportPacket.h"

#include <algorithm>

namespace xel {
namespace {

constexpr std::size_t headerSize = 4;

bool has(std::byte flags, unsigned mask) { return (flags & std::byte(mask)) != std::byte{0}; }

std::span<const std::byte> payloadOf(TransportPacket::Bytes bytes) {
  std::size_t start = headerSize;
  if (has(bytes[3], 0x20)) start += 1 + std::to_integer<std::size_t>(bytes[4]);
  if (!has(bytes[3], 0x10) || start > bytes.size()) return {};
  return bytes.subspan(start);
}

}  // namespace

std::uint16_t TransportPacket::pidOf(Bytes bytes) {
  return static_cast<std::uint16_t>((std::to_integer<unsigned>(bytes[1]) & 0x1F) << 8 |
                                    std::to_integer<unsigned>(bytes[2]));
}

bool TransportPacket::startsUnitIn(Bytes bytes) { return has(bytes[1], 0x40); }

TransportPacket::TransportPacket(Bytes bytes)
    : isDamaged(has(bytes[1], 0x80) || has(bytes[3], 0xC0)),
      startsUnit(startsUnitIn(bytes)),
      counter(std::to_integer<std::uint8_t>(bytes[3]) & 0x0F),
      payload(payloadOf(bytes)) {}

PacketOrder::Place PacketOrder::placeOf(const TransportPacket& packet) {
  // Counters may begin anew with a segment, so an equal one alone makes no repetition.
  if (hasBegun_ && packet.counter == lastCounter_ &&
      std::equal(packet.payload.begin(), packet.payload.end(), lastPayload_.begin(),
                 lastPayload_.end())) {
    return Place::repeated;
  }
  const bool isNext = !hasBegun_ || packet.counter == ((lastCounter_ + 1) & 0x0F);
  hasBegun_ = true;
  lastCounter_ = packet.counter;
  lastPayload_.assign(packet.payload.begin(), packet.payload.end());
  return isNext ? Place::next : Place::afterGap;
}

}  // namespace xel
