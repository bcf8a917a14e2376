#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "backends/gstreamer/TransportPacket.h"

namespace xel {

/// A stream of the program that a transport stream carries.
struct ProgramStream {
  enum class Kind { audioOrVideo, timedID3, other };

  std::uint16_t pid;
  Kind kind;
};

/// The PID that a program association section names for the map of the first program; absent if it
/// is not such a section or names none.
std::optional<std::uint16_t> programMapPID(std::span<const std::byte> section);

/// The streams of a program map section; absent if it is not one that is in force.
std::optional<std::vector<ProgramStream>> programStreams(std::span<const std::byte> section);

/// Joins the sections of one PID.
class SectionJoiner {
 public:
  using Found = std::function<void(std::span<const std::byte> section)>;

  void add(const TransportPacket& packet, const Found& found);

 private:
  void addBytes(std::span<const std::byte> bytes, const Found& found);
  void drop();

  PacketOrder order_;
  bool isInSection_ = false;
  std::vector<std::byte> left_;
};

}  // namespace xel
