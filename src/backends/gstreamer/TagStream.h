#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "backends/gstreamer/TransportPacket.h"

namespace xel {

/// Takes the ID3 tags out of the packets of one PID.
class TagStream {
 public:
  using Found = std::function<void(std::uint64_t timestamp, std::span<const std::byte> tag)>;

  /// @param found is called with each tag of a PES packet that has a timestamp, when it is whole or
  ///        when the PES packet ends within it.
  void add(const TransportPacket& packet, const Found& found);

 private:
  enum class Part { none, header, body };

  void addBytes(std::span<const std::byte> bytes, const Found& found);
  bool readHeader();
  void takeTags(const Found& found);
  /// The PES packet has ended.
  void end(const Found& found);
  /// The PES packet cannot be relied on, or is none.
  void drop();

  PacketOrder order_;
  Part part_ = Part::none;
  std::optional<std::uint64_t> timestamp_;
  /// What is still to come of the body; absent if it goes on until the next PES packet.
  std::optional<std::size_t> bodySize_;
  std::vector<std::byte> left_;
};

}  // namespace xel
