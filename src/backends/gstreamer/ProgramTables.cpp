#include "backends/gstreamer/ProgramTables.h"

#include <algorithm>
#include <array>

#include "backends/gstreamer/BigEndian.h"

namespace xel {
namespace {

using Bytes = std::span<const std::byte>;

constexpr std::size_t lengthEnd = 3;  ///< Where the length of a section has been told.
constexpr std::size_t checksumSize = 4;
constexpr std::byte associationTable{0x00};
constexpr std::byte mapTable{0x02};
constexpr std::byte noTable{0xFF};

std::size_t lengthAt(Bytes bytes, std::size_t offset) {
  return bigEndianAt<2>(bytes, offset) & 0x0FFF;
}

std::uint16_t pidAt(Bytes bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bigEndianAt<2>(bytes, offset) & 0x1FFF);
}

/// What a section holds from `begin` on; empty if it is of another table or not in force.
Bytes contents(Bytes section, std::byte table, std::size_t begin) {
  if (section.size() < begin + checksumSize || section[0] != table) return {};
  const bool isInForce = (section[5] & std::byte{1}) != std::byte{0};
  return isInForce ? section.subspan(begin, section.size() - begin - checksumSize) : Bytes();
}

bool tellsOfID3(Bytes descriptors) {
  constexpr std::byte metadataDescriptor{0x26};
  constexpr std::array format{std::byte{'I'}, std::byte{'D'}, std::byte{'3'}, std::byte{' '}};
  while (descriptors.size() >= 2) {
    const auto size =
        std::min(std::to_integer<std::size_t>(descriptors[1]), descriptors.size() - 2);
    const auto body = descriptors.subspan(2, size);
    if (descriptors[0] == metadataDescriptor &&
        std::search(body.begin(), body.end(), format.begin(), format.end()) != body.end()) {
      return true;
    }
    descriptors = descriptors.subspan(2 + size);
  }
  return false;
}

ProgramStream::Kind kindOf(std::byte streamType, Bytes descriptors) {
  using Kind = ProgramStream::Kind;
  switch (std::to_integer<unsigned>(streamType)) {
    case 0x15:
      return tellsOfID3(descriptors) ? Kind::timedID3 : Kind::other;
    case 0x01:  // MPEG-1 video
    case 0x02:  // MPEG-2 video
    case 0x03:  // MPEG-1 audio
    case 0x04:  // MPEG-2 audio
    case 0x0F:  // AAC in ADTS
    case 0x10:  // MPEG-4 video
    case 0x11:  // AAC in LATM
    case 0x1B:  // H.264
    case 0x24:  // H.265
    case 0x33:  // H.266
    case 0x81:  // AC-3
    case 0x87:  // Enhanced AC-3
    case 0xC1:  // AC-3, its samples encrypted
    case 0xC2:  // Enhanced AC-3, its samples encrypted
    case 0xCF:  // AAC, its samples encrypted
    case 0xDB:  // H.264, its samples encrypted
      return Kind::audioOrVideo;
    default:
      return Kind::other;
  }
}

}  // namespace

std::optional<std::uint16_t> programMapPID(Bytes section) {
  constexpr std::size_t begin = 8;
  constexpr std::size_t entrySize = 4;
  for (auto rest = contents(section, associationTable, begin); rest.size() >= entrySize;
       rest = rest.subspan(entrySize)) {
    if (bigEndianAt<2>(rest, 0) != 0) return pidAt(rest, 2);  // 0 is the network's own.
  }
  return std::nullopt;
}

std::optional<std::vector<ProgramStream>> programStreams(Bytes section) {
  constexpr std::size_t begin = 10;
  constexpr std::size_t entrySize = 5;
  auto rest = contents(section, mapTable, begin);
  if (rest.size() < 2) return std::nullopt;
  rest = rest.subspan(std::min(rest.size(), 2 + lengthAt(rest, 0)));
  std::vector<ProgramStream> streams;
  while (rest.size() >= entrySize) {
    const auto end = std::min(rest.size(), entrySize + lengthAt(rest, 3));
    const auto descriptors = rest.first(end).subspan(entrySize);
    streams.push_back({pidAt(rest, 1), kindOf(rest[0], descriptors)});
    rest = rest.subspan(end);
  }
  return streams;
}

void SectionJoiner::add(const TransportPacket& packet, const Found& found) {
  if (packet.isDamaged) return drop();
  if (packet.payload.empty()) return;
  const auto place = order_.placeOf(packet);
  if (place == PacketOrder::Place::repeated) return;
  if (place == PacketOrder::Place::afterGap) drop();
  if (!packet.startsUnit) return addBytes(packet.payload, found);
  // First comes the size of what still belongs to the last section.
  const auto bytes = packet.payload.subspan(1);
  const auto start = std::min(bytes.size(), std::to_integer<std::size_t>(packet.payload[0]));
  addBytes(bytes.first(start), found);
  drop();
  isInSection_ = true;
  addBytes(bytes.subspan(start), found);
}

void SectionJoiner::addBytes(Bytes bytes, const Found& found) {
  if (!isInSection_) return;
  left_.insert(left_.end(), bytes.begin(), bytes.end());
  Bytes rest = left_;
  while (rest.size() >= lengthEnd && rest[0] != noTable) {
    const std::size_t size = lengthEnd + lengthAt(rest, 1);
    if (rest.size() < size) break;
    found(rest.first(size));
    rest = rest.subspan(size);
  }
  if (!rest.empty() && rest[0] == noTable) return drop();
  left_.erase(left_.begin(), left_.end() - static_cast<std::ptrdiff_t>(rest.size()));
}

void SectionJoiner::drop() {
  isInSection_ = false;
  left_.clear();
}

}  // namespace xel
