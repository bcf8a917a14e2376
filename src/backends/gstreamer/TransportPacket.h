#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace xel {

/// One packet of an MPEG transport stream.
struct TransportPacket {
  static constexpr std::size_t size = 188;
  /// What each packet begins with.
  static constexpr std::byte sync{0x47};
  using Bytes = std::span<const std::byte, size>;

  /// The stream within the transport stream that a packet belongs to, 13 bits.
  static std::uint16_t pidOf(Bytes bytes);
  /// Whether a unit, such as a PES packet, begins with the packet's payload.
  static bool startsUnitIn(Bytes bytes);
  explicit TransportPacket(Bytes bytes);

  /// The payload cannot be relied on: there was a transmission error, or it is scrambled.
  bool isDamaged;
  bool startsUnit;
  /// Counts the packets of a PID that have a payload; 4 bits.
  std::uint8_t counter;
  std::span<const std::byte> payload;
};

/// Tells whether the packets of one PID come complete and in order.
class PacketOrder {
 public:
  enum class Place { next, repeated, afterGap };

  Place placeOf(const TransportPacket& packet);

 private:
  bool hasBegun_ = false;
  std::uint8_t lastCounter_ = 0;
  std::vector<std::byte> lastPayload_;
};

}  // namespace xel
