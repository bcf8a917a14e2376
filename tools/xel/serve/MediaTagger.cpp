#include "serve/MediaTagger.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

#include "serve/ID3Writer.h"

namespace xel::serve {
namespace {

constexpr std::size_t packetSize = 188;
constexpr std::size_t headerSize = 4;
constexpr std::size_t payloadSize = packetSize - headerSize;
constexpr std::uint64_t clockMask = (std::uint64_t{1} << 33) - 1;
/// Of the stream with the texts; none that ffmpeg gives out.
constexpr unsigned tagPID = 0x1F0;

unsigned byteAt(std::string_view bytes, std::size_t place) {
  return place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : 0;
}

unsigned pidOf(std::string_view packet) {
  return (byteAt(packet, 1) & 0x1F) << 8 | byteAt(packet, 2);
}

bool startsUnit(std::string_view packet) { return (byteAt(packet, 1) & 0x40) != 0; }

std::string_view payloadOf(std::string_view packet) {
  const bool hasAdaptation = (byteAt(packet, 3) & 0x20) != 0;
  return packet.substr(
      std::min(packet.size(), headerSize + (hasAdaptation ? 1 + byteAt(packet, headerSize) : 0)));
}

std::string bigEndian(std::uint64_t value, int bytes) {
  std::string text;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
    text += static_cast<char>(value >> shift);
  return text;
}

/// ISO/IEC 13818-1, annex A.
std::uint32_t crc32(std::string_view bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char byte : bytes) {
    crc ^= static_cast<std::uint32_t>(static_cast<unsigned char>(byte)) << 24;
    for (int bit = 0; bit < 8; ++bit) crc = (crc << 1) ^ ((crc >> 31) != 0 ? 0x04C11DB7 : 0);
  }
  return crc;
}

/// Where the program map is; found in the first packet of the association table.
std::optional<unsigned> programMapPID(std::string_view packet) {
  if (pidOf(packet) != 0 || !startsUnit(packet)) return std::nullopt;
  const auto section = payloadOf(packet).substr(1);
  return (byteAt(section, 10) & 0x1F) << 8 | byteAt(section, 11);
}

/// The program map with one more stream: timed ID3, as HLS players look for it.
std::string withTagStream(std::string_view packet) {
  const auto section = payloadOf(packet).substr(1);
  const std::size_t length = (byteAt(section, 1) & 0x0F) << 8 | byteAt(section, 2);
  const std::size_t infoLength = (byteAt(section, 10) & 0x0F) << 8 | byteAt(section, 11);
  const auto info = section.substr(12, infoLength);
  const auto streams = section.substr(12 + infoLength, length - 9 - infoLength - 4);
  using namespace std::string_literals;
  // The metadata pointer of the program, and the metadata descriptor of the stream.
  const std::string pointer =
      "\x25\x0F\xFF\xFFID3 \xFFID3 \x00\x1F"s + std::string(section.substr(3, 2));
  const std::string descriptor = "\x26\x0D\xFF\xFFID3 \xFFID3 \x00\x0F"s;
  const std::string stream = "\x15" + bigEndian(0xE000 | tagPID, 2) +
                             bigEndian(0xF000 | descriptor.size(), 2) + descriptor;
  const std::size_t added = pointer.size() + stream.size();
  std::string map = std::string(section.substr(0, 1)) + bigEndian(0xB000 | (length + added), 2) +
                    std::string(section.substr(3, 7)) +
                    bigEndian(0xF000 | (infoLength + pointer.size()), 2) + std::string(info) +
                    pointer + std::string(streams) + stream;
  map += bigEndian(crc32(map), 4);
  std::string made = std::string(packet.substr(0, 3)) +
                     static_cast<char>(0x10 | (byteAt(packet, 3) & 0x0F)) + '\0' + map;
  made.resize(packetSize, '\xFF');
  return made;
}

/// The presentation time of a packet that begins a picture.
std::optional<std::uint64_t> pictureTime(std::string_view packet) {
  const auto unit = payloadOf(packet);
  const bool isPicture = startsUnit(packet) && unit.starts_with(std::string_view("\0\0\1", 3)) &&
                         (byteAt(unit, 3) & 0xF0) == 0xE0 && (byteAt(unit, 7) & 0x80) != 0;
  if (!isPicture) return std::nullopt;
  const auto part = [&unit](std::size_t place) { return std::uint64_t{byteAt(unit, place)}; };
  return (part(9) & 0x0E) << 29 | part(10) << 22 | (part(11) & 0xFE) << 14 | part(12) << 7 |
         part(13) >> 1;
}

std::string tagUnit(const std::string& text, std::uint64_t ticks) {
  const std::string content = id3Tag(textFrame(text));
  const std::array<std::uint64_t, 5> time = {0x21 | (ticks >> 29 & 0x0E), ticks >> 22 & 0xFF,
                                             0x01 | (ticks >> 14 & 0xFE), ticks >> 7 & 0xFF,
                                             0x01 | (ticks << 1 & 0xFE)};
  std::string rest = "\x84\x80\x05";
  for (const std::uint64_t byte : time) rest += static_cast<char>(byte);
  rest += content;
  return std::string("\0\0\1\xBD", 4) + bigEndian(rest.size(), 2) + rest;
}

/// A unit cut into packets.
void appendPackets(std::string_view unit, std::size_t& counter, std::string& out) {
  for (bool isFirst = true; !unit.empty(); isFirst = false) {
    const auto piece = unit.substr(0, payloadSize);
    unit.remove_prefix(piece.size());
    out += '\x47' + bigEndian((isFirst ? 0x4000U : 0U) | tagPID, 2);
    const std::size_t stuffing = payloadSize - piece.size();
    out += static_cast<char>((stuffing != 0 ? 0x30 : 0x10) | (counter++ & 0x0F));
    if (stuffing != 0) out += static_cast<char>(stuffing - 1);
    if (stuffing > 1) out += '\0' + std::string(stuffing - 2, '\xFF');
    out += piece;
  }
}

std::uint64_t toTicks(double seconds) {
  return static_cast<std::uint64_t>(std::llround(seconds * 90000));
}

}  // namespace

std::size_t packetsOf(const StreamText& text) {
  return (tagUnit(text.value, 0).size() + payloadSize - 1) / payloadSize;
}

std::string taggedTransportStream(std::string_view segment, const std::vector<StreamText>& texts,
                                  std::size_t earlierPackets) {
  std::string out;
  std::optional<unsigned> mapPID;
  std::optional<std::uint64_t> start;
  std::size_t counter = earlierPackets;
  auto next = texts.begin();
  for (; segment.size() >= packetSize; segment.remove_prefix(packetSize)) {
    const auto packet = segment.substr(0, packetSize);
    if (!mapPID) mapPID = programMapPID(packet);
    if (pidOf(packet) == mapPID && startsUnit(packet)) {
      out += withTagStream(packet);
      continue;
    }
    if (const auto time = pictureTime(packet)) {
      if (!start) start = time;
      const std::uint64_t played = (*time - *start) & clockMask;
      for (; next != texts.end() && toTicks(next->time) <= played; ++next) {
        appendPackets(tagUnit(next->value, (*start + toTicks(next->time)) & clockMask), counter,
                      out);
      }
    }
    out += packet;
  }
  for (; start && next != texts.end(); ++next) {
    appendPackets(tagUnit(next->value, (*start + toTicks(next->time)) & clockMask), counter, out);
  }
  return out;
}

std::size_t adtsFrameSize(std::string_view bytes) {
  constexpr std::size_t shortestHeader = 7;
  if (bytes.size() < shortestHeader || byteAt(bytes, 0) != 0xFF ||
      (byteAt(bytes, 1) & 0xF6) != 0xF0) {
    return 0;
  }
  const std::size_t size =
      (byteAt(bytes, 3) & 0x03) << 11 | byteAt(bytes, 4) << 3 | byteAt(bytes, 5) >> 5;
  return size <= bytes.size() ? size : 0;
}

std::string taggedPackedAudio(std::string_view frames, std::uint64_t ticks,
                              const std::vector<StreamText>& texts) {
  std::string out = id3Tag(timestampFrame(ticks & clockMask));
  auto next = texts.begin();
  constexpr double frameSeconds = static_cast<double>(samplesPerFrame) / sampleRate;
  double time = 0;
  while (const std::size_t size = adtsFrameSize(frames)) {
    for (; next != texts.end() && next->time <= time + frameSeconds / 2; ++next) {
      out += id3Tag(textFrame(next->value));
    }
    out += frames.substr(0, size);
    frames.remove_prefix(size);
    time += frameSeconds;
  }
  for (; next != texts.end(); ++next) out += id3Tag(textFrame(next->value));
  return out;
}

}  // namespace xel::serve
