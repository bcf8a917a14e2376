#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// Writes ID3 tags, and media that carry them, byte by byte.
namespace xel::test {

using namespace std::string_literals;
using Timestamp = std::optional<std::uint64_t>;

inline constexpr std::uint64_t second = 90'000;
inline constexpr int audioPID = 0x101, tagPID = 0x102, otherTagPID = 0x103;

inline std::string bytes(std::uint64_t number, int count, int bits = 8) {
  std::string text;
  while (count-- > 0) text += static_cast<char>(number >> (bits * count) & ((1U << bits) - 1));
  return text;
}

inline std::string frame(const std::string& id, const std::string& body, int version = 4) {
  return id + bytes(body.size(), 4, version == 4 ? 7 : 8) + "\0\0"s + body;
}

inline std::string tag(const std::string& frames, int version = 4, int flags = 0) {
  return "ID3"s + char(version) + '\0' + char(flags) + bytes(frames.size(), 4, 7) + frames;
}

/// A tag with one text.
inline std::string text(const std::string& value) { return tag(frame("TXXX", "\x03\0"s + value)); }

inline std::string stamp(std::uint64_t timestamp, const std::string& frames = "") {
  return tag(
      frame("PRIV", "com.apple.streaming.transportStreamTimestamp\0"s + bytes(timestamp, 8)) +
      frames);
}

/// A frame of audio whose blocks last 1,024 / 48,000 seconds each.
inline std::string audioFrame(int blocks = 1) {
  return "\xFF\xF1\x4C"s + bytes(10 << 13 | 0x1FFC | (blocks - 1), 4) + "abc";
}

inline std::string pes(Timestamp presentation, const std::string& body, Timestamp decoding = {},
                       std::optional<std::size_t> length = {}) {
  const auto encoded = [](unsigned prefix, std::uint64_t time) {
    return bytes(prefix << 4 | (time >> 29 & 0xE) | 1, 1) + bytes((time >> 14 & 0xFFFE) | 1, 2) +
           bytes((time << 1 & 0xFFFE) | 1, 2);
  };
  std::string times;
  if (presentation) times += encoded(decoding ? 3 : 2, *presentation);
  if (decoding) times += encoded(1, *decoding);
  return "\0\0\1\xBD"s + bytes(length.value_or(3 + times.size() + body.size()), 2) + '\x80' +
         char(presentation ? (decoding ? 0xC0 : 0x80) : 0) + char(times.size()) + times + body;
}

inline std::string box(const std::string& type, const std::string& body) {
  return bytes(body.size() + 8, 4) + type + body;
}

inline std::string movie(unsigned track, unsigned timescale) {
  const auto header = [](unsigned number) { return std::string(12, '\0') + bytes(number, 4); };
  return box("moov",
             box("trak", box("tkhd", header(track)) + box("mdia", box("mdhd", header(timescale)))));
}

inline std::string fragment(unsigned track, std::uint64_t start) {
  return box("moof", box("traf", box("tfhd", "\0\0\0\0"s + bytes(track, 4)) +
                                     box("tfdt", "\1\0\0\0"s + bytes(start, 8)))) +
         box("mdat", std::string(900, 'm'));
}

inline std::string message(int version, unsigned timescale, std::uint64_t time,
                           const std::string& body,
                           const std::string& scheme = "https://aomedia.org/emsg/ID3") {
  const auto times = bytes(timescale, 4) + bytes(time, version == 1 ? 8 : 4) + std::string(8, '\1');
  const auto names = scheme + "\0v\0"s;
  return box("emsg",
             char(version) + "\0\0\0"s + (version == 1 ? times + names : names + times) + body);
}

inline std::string section(int table, const std::string& body) {
  return bytes(table, 1) + bytes(0xB000 | (body.size() + 4), 2) + body + "CRC?";
}

inline std::string programAssociation(int mapPID) {
  return section(0, "\0\1\xC1\0\0\0\0\xE0\x10\0\1"s + bytes(0xE000 | mapPID, 2));
}

inline std::string programMap(const std::vector<int>& tagPIDs, const std::string& format = "ID3 ") {
  std::string streams = "\x0F"s + bytes(0xE000 | audioPID, 2) + "\xF0\0"s;
  for (const int pid : tagPIDs) {
    streams += "\x15"s + bytes(0xE000 | pid, 2) + "\xF0\x15\5\4ID3 \x26\x0D\xFF\xFF"s + format +
               "\xFF" + format + "\0\x0F"s;
  }
  return section(2, "\0\1\xC1\0\0\xE1\1\xF0\0"s + streams);
}

/// Writes a transport stream.
class Stream {
 public:
  Stream& packet(int pid, bool starts, const std::string& payload, int flags = 0) {
    const std::string stuffing(184 - payload.size(), '\xFF');
    std::string adaptation =
        stuffing.empty() ? "" : bytes(stuffing.size() - 1, 1) + stuffing.substr(1);
    if (adaptation.size() > 1) adaptation[1] = 0;
    text += "\x47"s + bytes(static_cast<unsigned>(flags << 8 | (starts ? 0x4000 : 0) | pid), 2) +
            char((adaptation.empty() ? 0x10 : 0x30) | (counters[pid]++ & 0xF)) + adaptation +
            payload;
    return *this;
  }
  /// @param largest the most bytes of the unit that are put into one packet.
  Stream& unit(int pid, const std::string& unit, std::size_t largest = 184) {
    for (std::size_t at = 0; at < unit.size(); at += largest) {
      packet(pid, at == 0, unit.substr(at, largest));
    }
    return *this;
  }
  /// @param section as it stands in the stream.
  Stream& table(int pid, const std::string& section, std::size_t largest = 184) {
    return unit(pid, '\0' + section, largest);
  }
  /// Declares the audio, and timed ID3 streams.
  Stream& tables(const std::vector<int>& tagPIDs = {tagPID}, int mapPID = 0x100,
                 std::size_t largest = 184) {
    return table(0, programAssociation(mapPID)).table(mapPID, programMap(tagPIDs), largest);
  }
  Stream& audio(Timestamp presentation, Timestamp decoding = {}) {
    return unit(audioPID, pes(presentation, "sound", decoding));
  }
  Stream& tagged(std::uint64_t time, const std::string& body) {
    return unit(tagPID, pes(time, body));
  }

  // NOLINTNEXTLINE(google-explicit-constructor)
  operator const std::string&() const { return text; }

  std::string text;
  std::map<int, int> counters;
};

}  // namespace xel::test
