#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "backends/gstreamer/TimedTagReader.h"

namespace xel {
namespace {

using namespace std::string_literals;
using Timestamp = std::optional<std::uint64_t>;
using Strings = std::vector<std::string>;

constexpr std::uint64_t second = 90'000;
constexpr int audioPID = 0x101, tagPID = 0x102, otherTagPID = 0x103;

std::string bytes(std::uint64_t number, int count, int bits = 8) {
  std::string text;
  while (count-- > 0) text += static_cast<char>(number >> (bits * count) & ((1U << bits) - 1));
  return text;
}

std::string frame(const std::string& id, const std::string& body, int version = 4) {
  return id + bytes(body.size(), 4, version == 4 ? 7 : 8) + "\0\0"s + body;
}

std::string tag(const std::string& frames, int version = 4, int flags = 0) {
  return "ID3"s + char(version) + '\0' + char(flags) + bytes(frames.size(), 4, 7) + frames;
}

/// A tag with one text.
std::string text(const std::string& value) { return tag(frame("TXXX", "\x03\0"s + value)); }

std::string stamp(std::uint64_t timestamp, const std::string& frames = "") {
  return tag(
      frame("PRIV", "com.apple.streaming.transportStreamTimestamp\0"s + bytes(timestamp, 8)) +
      frames);
}

/// A frame of audio that lasts 1,024 / 48,000 seconds.
std::string audioFrame(const std::string& body = "abc") {
  return "\xFF\xF1\x4C"s + bytes((body.size() + 7) << 13 | 0x1FFC, 4) + body;
}

std::string pes(Timestamp presentation, const std::string& body, Timestamp decoding = {},
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

std::string box(const std::string& type, const std::string& body) {
  return bytes(body.size() + 8, 4) + type + body;
}

std::string movie(unsigned track, unsigned timescale) {
  const auto header = [](unsigned number) { return std::string(12, '\0') + bytes(number, 4); };
  return box("moov",
             box("trak", box("tkhd", header(track)) + box("mdia", box("mdhd", header(timescale)))));
}

std::string fragment(unsigned track, std::uint64_t start) {
  return box("moof", box("traf", box("tfhd", "\0\0\0\0"s + bytes(track, 4)) +
                                     box("tfdt", "\1\0\0\0"s + bytes(start, 8)))) +
         box("mdat", std::string(900, 'm'));
}

std::string message(int version, unsigned timescale, std::uint64_t time, const std::string& body,
                    const std::string& scheme = "https://aomedia.org/emsg/ID3") {
  const auto times = bytes(timescale, 4) + bytes(time, version == 1 ? 8 : 4) + std::string(8, '\1');
  const auto names = scheme + "\0v\0"s;
  return box("emsg",
             char(version) + "\0\0\0"s + (version == 1 ? times + names : names + times) + body);
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
  Stream& section(int pid, int table, const std::string& body, std::size_t largest = 184) {
    return unit(pid,
                '\0' + bytes(table, 1) + bytes(0xB000 | (body.size() + 4), 2) + body + "\0\0\0\0"s,
                largest);
  }
  /// @param tagPIDs the streams that are declared as timed ID3, beside the audio.
  Stream& tables(const std::vector<int>& tagPIDs = {tagPID}, int mapPID = 0x100,
                 std::size_t largest = 184) {
    section(0, 0, "\0\1\xC1\0\0\0\0\xE0\x10\0\1"s + bytes(0xE000 | mapPID, 2));
    std::string streams = "\x0F"s + bytes(0xE000 | audioPID, 2) + "\xF0\0"s;
    for (const int pid : tagPIDs) {
      streams += "\x15"s + bytes(0xE000 | pid, 2) + "\xF0\x0F\x26\x0D\xFF\xFFID3 \xFFID3 \0\x0F"s;
    }
    return section(mapPID, 2, "\0\1\xC1\0\0\xE1\1\xF0\0"s + streams, largest);
  }
  Stream& audio(Timestamp presentation, Timestamp decoding = {}) {
    return unit(audioPID, pes(presentation, "sound", decoding));
  }
  Stream& tagged(std::uint64_t time, const std::string& body) {
    return unit(tagPID, pes(time, body));
  }

  std::string text;
  std::map<int, int> counters;
};

Stream begun() { return Stream().tables().audio(0); }

/// Reads a stream in pieces: "milliseconds key=value…" for each tag.
Strings readInPieces(TimedTagReader& reader, const std::string& stream,
                     std::uniform_int_distribution<std::size_t> sizes) {
  std::mt19937 random(1);
  Strings found;
  for (std::size_t at = 0; at < stream.size();) {
    // On the heap, where a read beyond a piece is seen.
    const auto text = stream.substr(at, sizes(random));
    const std::vector<char> piece(text.begin(), text.end());
    at += piece.size();
    reader.read(std::as_bytes(std::span(piece)), [&](const TimedTag& each) {
      auto& line = found.emplace_back(std::to_string(std::llround(each.time * 1000)));
      for (const auto& [key, value] : each.items) line += " " + key + "=" + value.value_or("-");
    });
  }
  return found;
}

/// Reads a stream that begins at 100 seconds; what is found must not depend on how it is cut.
Strings read(const std::string& stream) {
  const auto readAs = [&](std::size_t smallest, std::size_t largest) {
    TimedTagReader reader;
    reader.beginRun(100);
    return readInPieces(reader, stream, std::uniform_int_distribution(smallest, largest));
  };
  const auto whole = readAs(stream.size(), stream.size());
  for (const std::size_t largest : {1, 9, 700}) {
    EXPECT_EQ(readAs(1, largest), whole) << "in pieces of at most " << largest;
  }
  return whole;
}

struct Case {
  const char* behaviour;
  std::string stream;
  Strings expected;
};

void check(const std::vector<Case>& cases) {
  for (const auto& [behaviour, stream, expected] : cases) {
    EXPECT_EQ(read(stream), expected) << behaviour;
  }
}

TEST(TimedTagReaderTest, TimesTagsByTheFirstAudioOrVideo) {
  constexpr std::uint64_t wrap = std::uint64_t{1} << 33;
  Stream days = begun();
  for (std::uint64_t hour = 1; hour <= 60; ++hour) days.audio(hour * 3'600 * second % wrap);
  const auto at = [](std::uint64_t time) { return Stream().tables().audio(time); };
  const auto a = text("a"), b = text("b");
  check({
      {"presented", at(5 * second).tagged(7 * second, a).text, {"102000 TXXX=a"}},
      {"decoded earlier",
       Stream().tables().audio(5 * second, 4 * second).audio(9 * second).tagged(7 * second, a).text,
       {"103000 TXXX=a"}},
      {"tags come first",
       Stream().tables().tagged(7 * second, a).tagged(4 * second, b).audio(5 * second).text,
       {"102000 TXXX=a", "99000 TXXX=b"}},
      {"only tags", Stream().tables().tagged(second, a).text, {}},
      {"no timestamp",
       Stream()
           .tables()
           .audio({})
           .audio(5 * second)
           .unit(tagPID, pes({}, a))
           .tagged(6 * second, b)
           .text,
       {"101000 TXXX=b"}},
      {"timestamps begin anew",
       at(wrap - second).tagged(second, a).tagged(wrap - 2 * second, b).text,
       {"102000 TXXX=a", "99000 TXXX=b"}},
      {"after days", days.tagged((60 * 3'600 + 1) * second % wrap, a).text, {"216101000 TXXX=a"}},
  });
}

TEST(TimedTagReaderTest, FindsTagsHoweverTheyLieInPackets) {
  const auto a = text("a"), b = text("b"), x = text(std::string(400, 'x'));
  const auto foundX = "100000 TXXX=" + std::string(400, 'x');
  const auto unitX = pes(0, x);
  const auto two = tag(frame("TIT2", "\3one") + frame("TPE1", "\3two"));
  check({
      {"in several", begun().unit(tagPID, unitX).text, {foundX}},
      {"a little in each", begun().unit(tagPID, unitX, 3).text, {foundX}},
      {"no length", begun().unit(tagPID, pes(0, x, {}, 0)).text, {foundX}},
      {"cut by the next",
       begun().unit(tagPID, pes(0, two.substr(0, two.size() - 1), {}, 0)).tagged(second, b).text,
       {"100000 TIT2=one", "101000 TXXX=b"}},
      {"cut by its length", begun().unit(tagPID, pes(0, two, {}, 45)).text, {"100000 TIT2=one"}},
      {"several tags",
       begun().tagged(0, a + two + b).text,
       {"100000 TXXX=a", "100000 TIT2=one TPE1=two", "100000 TXXX=b"}},
      {"among other bytes", begun().tagged(0, "IID3\xFF" + a + "ID").text, {"100000 TXXX=a"}},
      {"two streams",
       Stream()
           .tables({tagPID, otherTagPID})
           .audio(0)
           .packet(tagPID, true, unitX.substr(0, 184))
           .unit(otherTagPID, pes(second, b))
           .packet(tagPID, false, unitX.substr(184, 184))
           .packet(tagPID, false, unitX.substr(368))
           .text,
       {"101000 TXXX=b", foundX}},
      {"tables in several",
       Stream().tables({tagPID}, 0x100, 5).audio(0).tagged(0, a).text,
       {"100000 TXXX=a"}},
      {"declared later",
       Stream()
           .tables({otherTagPID})
           .audio(0)
           .tagged(0, b)
           .tables()
           .tagged(0, a)
           .unit(otherTagPID, pes(0, b))
           .text,
       {"100000 TXXX=a"}},
      {"another map",
       Stream().tables({}).audio(0).tables({tagPID}, 0x99).tagged(0, a).text,
       {"100000 TXXX=a"}},
  });
}

TEST(TimedTagReaderTest, DropsUnitsOfATransportStreamThatAreNotWhole) {
  const auto unit = pes(0, text(std::string(300, 'x')));
  const auto first = unit.substr(0, 184), last = unit.substr(184);
  const Strings next{"101000 TXXX=b"};
  const Strings both{"100000 TXXX=" + std::string(300, 'x'), next[0]};
  const auto half = begun().packet(tagPID, true, first);
  auto gap = half, repeated = half, restarted = half, misplaced = half;
  ++gap.counters[tagPID];
  repeated.text += half.text.substr(half.text.size() - 188);
  restarted.packet(tagPID, false, last).counters[tagPID] = 1;
  misplaced.text += "junkGG" + std::string(100, 'x');
  const auto end = [&](Stream& stream, bool isLastThere = true, int flags = 0) {
    if (isLastThere) stream.packet(tagPID, false, last, flags);
    return stream.tagged(second, text("b")).audio(0).audio(0).text;
  };
  auto damaged = half;
  check({
      {"gap", end(gap), next},
      {"repeated packet", end(repeated), both},
      {"counters begin anew", end(restarted, false), both},
      {"transmission error", end(damaged, true, 0x80), next},
      {"other bytes between", end(misplaced), both},
      {"other bytes before", "GG" + Stream(half).tagged(second, text("b")).text, next},
  });
}

TEST(TimedTagReaderTest, TimesTagsOfPackedAudioByTimestampsAndFrames) {
  constexpr std::uint64_t start = (std::uint64_t{1} << 33) - second;
  const auto a = text("a"), b = text("b");
  const auto sound = audioFrame(), other = "\xFF\xFB\x90\x44 is MP3"s;
  check({
      {"no timestamps", sound + sound + sound + a + sound, {"100064 TXXX=a"}},
      {"timestamps",
       stamp(start, frame("TIT2", "\3t")) + sound + a + stamp(second / 2) + b + sound + b + sound,
       {"100000 TIT2=t", "101500 TXXX=a", "101500 TXXX=b", "101521 TXXX=b"}},
      {"a timestamp later on", sound + sound + sound + stamp(5) + a + sound, {"100064 TXXX=a"}},
      {"nothing follows", sound + a, {}},
      {"other bytes between",
       stamp(0) + sound + "?\xFF\xF1\x4CI?" + a + sound + b + sound + std::string(9'000, '?'),
       {"100021 TXXX=a", "100043 TXXX=b"}},
      {"other audio", stamp(0) + other + a + other, {"100000 TXXX=a"}},
  });
}

TEST(TimedTagReaderTest, TimesEventMessagesByFragments) {
  constexpr std::uint64_t day = 86'400;
  const auto a = text("a"), b = text("b");
  const auto init = box("ftyp", "iso6") + movie(7, 1'000);
  const auto first = fragment(7, day * 1'000);
  check({
      {"own times", init + message(1, 90'000, (day + 2) * 90'000, a) + first, {"102000 TXXX=a"}},
      {"several tags",
       init + message(1, 1, day, a + b) + first,
       {"100000 TXXX=a", "100000 TXXX=b"}},
      {"from the fragment",
       init + first + message(0, 10, 15, a) + fragment(7, (day + 4) * 1'000),
       {"105500 TXXX=a"}},
      {"other messages",
       init + message(1, 1, day, a, "urn:x") + message(2, 1, day, a) + message(1, 0, day, a) +
           message(1, 1, day, a).substr(0, 30) + first,
       {}},
      {"another track",
       init + message(1, 1, 5, a) + fragment(8, 0) + fragment(7, 5'000) + first,
       {"100000 TXXX=a"}},
      {"large boxes",
       init + box("free", std::string(300'000, ' ')) + box("moof", std::string(300'000, ' ')) +
           message(1, 1, day, a) + "\0\0\0\1mdat\0\0\0\0\0\0\0\x12??"s + first,
       {"100000 TXXX=a"}},
      {"to the end",
       init + message(1, 1, day, a) + first + "\0\0\0\0mdat"s + message(1, 1, day, b) + first,
       {"100000 TXXX=a"}},
  });
}

TEST(TimedTagReaderTest, ReadsTextFrames) {
  const auto v3 = [](const std::string& id, const std::string& body) { return frame(id, body, 3); };
  const auto extended = "\0\0\0\6\0\0\0\0\0\0"s,
             packed = "TIT2\0\0\0\x0F\0\x08\0\0\0\3\x78\x9C\x63\xCE\xCB\7\0\1\x57\0\xE1"s;
  const struct {
    const char* behaviour;
    std::string tag;
    const char* expected;
  } cases[] = {
      {"UTF-16", tag(v3("TXXX", "\1\xFF\xFEk\0\0\0\xFF\xFE\xE9\0\xAC\x20"s), 3), "TXXX=é€"},
      {"UTF-16, most significant first", tag(frame("TXXX", "\2\0k\0\0\0\xE9"s)), "TXXX=é"},
      {"Latin-1", tag(v3("TALB", "\0\xE9"s), 3), "TALB=é"},
      {"unsynchronised", tag("TALB\0\0\0\5\0\0\1\xFF\0\xFE\xE9\0"s, 3, 0x80), "TALB=é"},
      {"extended header", tag(extended + v3("TALB", "\0x"s), 3, 0x40), "TALB=x"},
      {"own identifiers", tag(v3("TYER", "\0y"s) + v3("TDAT", "\0d"s), 3), "TYER=y TDAT=d"},
      {"several strings",
       tag(frame("TXXX", "\3k\0a\0b"s) + frame("TIT2",
                                               "\3"
                                               "a\0b"s)),
       "TXXX=a/b TIT2=a/b"},
      {"a description only", tag(frame("TXXX", "\3k\0"s)), "TXXX=k"},
      {"no text", tag(frame("TXXX", "\3"s) + frame("TXXX", "\3\0"s)), "TXXX=- TXXX=-"},
      {"broken text", tag(frame("TIT2", "\3\xC0\xFF") + frame("TIT3", "\1\xFF\xFE\0\xD8"s)),
       "TIT2=- TIT3=-"},
      {"other frames", tag(frame("CHAP", "x") + packed + frame("TIT2", "\3x")), "TIT2=x"},
  };
  for (const auto& [behaviour, bytes, expected] : cases) {
    EXPECT_EQ(read(begun().tagged(0, bytes).text), Strings{"100000 "s + expected}) << behaviour;
  }
  EXPECT_EQ(read(begun().tagged(0, tag(frame("PRIV", "x"))).text), Strings{});
}

TEST(TimedTagReaderTest, BeginsAnewWithEachRun) {
  TimedTagReader reader;
  const auto readWhole = [&](const std::string& stream) {
    return readInPieces(reader, stream,
                        std::uniform_int_distribution(stream.size(), stream.size()));
  };
  const auto waiting = Stream().tables().tagged(second, text("a")).text;
  EXPECT_EQ(readWhole(begun().tagged(0, text("a")).text), Strings{});
  reader.beginRun(1);
  EXPECT_EQ(readWhole(waiting + waiting.substr(0, 100)), Strings{});
  reader.beginRun(2);
  EXPECT_EQ(readWhole(begun().tagged(0, text("b")).text), Strings{"2000 TXXX=b"});
  EXPECT_EQ(readWhole(Stream().audio(second).tagged(second, text("c")).text),
            Strings{"3000 TXXX=c"});
  reader.beginRun(5);
  EXPECT_EQ(readWhole(stamp(0) + text("d") + audioFrame() + text("e")), Strings{"5000 TXXX=d"});
  reader.beginRun(6);
  EXPECT_EQ(readWhole(Stream().tables().audio(second).tagged(second, text("f")).text),
            Strings{"6000 TXXX=f"});
  reader.beginRun(7);
  EXPECT_EQ(readWhole(box("ftyp", "") + movie(1, 10) + fragment(1, 0)), Strings{});
  reader.beginRun(8);
  EXPECT_EQ(readWhole(message(1, 10, 20, text("g")) + fragment(1, 10)), Strings{"9000 TXXX=g"});
}

TEST(TimedTagReaderTest, HoldsAndPassesOverNoMoreThanItMust) {
  const auto large = tag(frame("TXXX", std::string(300'000, 'x')));
  EXPECT_EQ(read(begun().unit(tagPID, pes(0, large, {}, 0)).tagged(second, text("b")).text),
            Strings{"101000 TXXX=b"});
  EXPECT_EQ(read(audioFrame() + large + text("b") + audioFrame()), Strings{"100021 TXXX=b"});
  Stream many = Stream().tables();
  std::string manyInAudio;
  for (int i = 0; i < 1'100; ++i) {
    many.tagged(0, text("a"));
    manyInAudio += text("a");
  }
  EXPECT_EQ(read(many.audio(0).text).size(), 1'024U);
  EXPECT_EQ(read(manyInAudio + audioFrame()).size(), 1'024U);
}

TEST(TimedTagReaderTest, ReadsWhateverBytesCome) {
  const auto texts = tag(frame("TXXX", "\1\xFF\xFEk\0\0\0\xFF\xFE\xE9\0"s) + frame("TIT2", "\3x"));
  const std::string good[] = {
      Stream()
          .tables({tagPID, otherTagPID}, 0x100, 50)
          .tagged(0, texts)
          .audio(0, 0)
          .unit(otherTagPID, pes(second, texts + texts, {}, 0), 40)
          .tagged(second, text("x"))
          .text,
      stamp(0, frame("TIT2", "\3x")) + audioFrame() + texts + audioFrame() + "?" + audioFrame() +
          tag(frame("TXXX", "\3k\0x"s), 3, 0xC0) + audioFrame(),
      box("ftyp", "") + movie(1, 10) + message(1, 10, 5, texts) + fragment(1, 0) +
          message(0, 10, 5, texts) + fragment(1, 9),
  };
  std::mt19937 random(7);
  const auto below = [&](std::size_t end) {
    return std::uniform_int_distribution(std::size_t{0}, end - 1)(random);
  };
  std::size_t found = 0;
  for (int i = 0; i < 2'000; ++i) {
    auto stream = good[i % 3];
    for (auto changes = below(8) + 1; changes > 0; --changes) {
      const auto at = below(stream.size());
      switch (below(4)) {
        case 0:
          stream[at] = static_cast<char>(below(256));
          break;
        case 1:
          stream[at] = static_cast<char>(stream[at] ^ 1 << below(8));
          break;
        case 2:
          stream.erase(at, below(200));
          break;
        default:
          stream.insert(at, stream, below(stream.size()), below(200));
      }
      if (stream.empty()) stream = "G";
    }
    found += read(stream).size();
  }
  EXPECT_GT(found, 1'000U);  // Most mutants are still read for the most part.
}

}  // namespace
}  // namespace xel
