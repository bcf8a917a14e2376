#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "backends/gstreamer/TimedTagReader.h"
#include "support/TaggedStreams.h"

namespace xel {
namespace {

using namespace test;
using Strings = std::vector<std::string>;

constexpr std::uint64_t wrap = std::uint64_t{1} << 33;

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
  Stream days = begun();
  for (std::uint64_t hour = 1; hour <= 60; ++hour) days.audio(hour * 3'600 * second % wrap);
  const auto at = [](std::uint64_t time) { return Stream().tables().audio(time); };
  const auto a = text("a"), b = text("b");
  check({
      {"presented", at(5 * second).tagged(7 * second, a), {"102000 TXXX=a"}},
      {"decoded earlier",
       Stream().tables().audio(5 * second, 4 * second).audio(9 * second).tagged(7 * second, a),
       {"103000 TXXX=a"}},
      {"tags come first",
       Stream().tables().tagged(7 * second, a).tagged(4 * second, b).audio(5 * second),
       {"102000 TXXX=a", "99000 TXXX=b"}},
      {"only tags", Stream().tables().tagged(second, a), {}},
      {"no timestamp",
       Stream()
           .tables()
           .audio({})
           .audio(5 * second)
           .unit(tagPID, pes({}, a + a.substr(0, 20)))
           .tagged(6 * second, b),
       {"101000 TXXX=b"}},
      {"timestamps begin anew",
       at(wrap - second).tagged(second, a).tagged(wrap - 2 * second, b),
       {"102000 TXXX=a", "99000 TXXX=b"}},
      {"after days", days.tagged((60 * 3'600 + 1) * second % wrap, a), {"216101000 TXXX=a"}},
  });
}

TEST(TimedTagReaderTest, FindsTagsHoweverTheyLieInPackets) {
  const auto a = text("a"), b = text("b"), x = text(std::string(400, 'x'));
  const auto foundX = "100000 TXXX=" + std::string(400, 'x');
  const auto unitX = pes(0, x);
  const auto map = programMap({tagPID});
  auto later = map;
  later[5] = '\xC0';
  const auto two = tag(frame("TIT2", "\3one") + frame("TPE1", "\3two"));
  check({
      {"in several", begun().unit(tagPID, unitX), {foundX}},
      {"a little in each", begun().unit(tagPID, unitX, 3), {foundX}},
      {"no length", begun().unit(tagPID, pes(0, x, {}, 0)), {foundX}},
      {"cut by the next",
       begun().unit(tagPID, pes(0, two.substr(0, two.size() - 1), {}, 0)).tagged(second, b),
       {"100000 TIT2=one", "101000 TXXX=b"}},
      {"cut by its length", begun().unit(tagPID, pes(0, two, {}, 45)), {"100000 TIT2=one"}},
      {"several tags",
       begun().tagged(0, a + two + b),
       {"100000 TXXX=a", "100000 TIT2=one TPE1=two", "100000 TXXX=b"}},
      {"among other bytes", begun().tagged(0, "IID3\xFF" + a + "ID"), {"100000 TXXX=a"}},
      {"two streams",
       Stream()
           .tables({tagPID, otherTagPID})
           .audio(0)
           .packet(tagPID, true, unitX.substr(0, 184))
           .unit(otherTagPID, pes(second, b))
           .packet(tagPID, false, unitX.substr(184, 184))
           .packet(tagPID, false, unitX.substr(368)),
       {"101000 TXXX=b", foundX}},
      {"tables in several",
       Stream().tables({tagPID}, 0x100, 5).audio(0).tagged(0, a),
       {"100000 TXXX=a"}},
      {"a table that ends where another begins",
       Stream()
           .table(0, programAssociation(0x100))
           .packet(0x100, true, '\0' + map.substr(0, 20))
           .packet(0x100, true, bytes(map.size() - 20, 1) + map.substr(20) + '\xFF')
           .audio(0)
           .tagged(0, a),
       {"100000 TXXX=a"}},
      {"declared later",
       Stream()
           .tables({otherTagPID})
           .audio(0)
           .tagged(0, b)
           .tables()
           .tagged(0, a)
           .unit(otherTagPID, pes(0, b)),
       {"100000 TXXX=a"}},
      {"declared elsewhere",
       Stream().tables({}).audio(0).tables({tagPID}, 0x99).tagged(0, a),
       {"100000 TXXX=a"}},
      {"not yet declared", Stream().tables({}).table(0x100, later).audio(0).tagged(0, a), {}},
      {"other metadata",
       Stream().tables({}).table(0x100, programMap({tagPID}, "KLVA")).audio(0).tagged(0, a),
       {}},
  });
}

TEST(TimedTagReaderTest, DropsUnitsOfATransportStreamThatAreNotWhole) {
  const auto value = std::string(200, 'x') + std::string(200, 'y');
  const auto unit = pes(0, tag(frame("TIT2", "\3one") + frame("TXXX", '\3' + value)));
  const auto begin = begun().packet(tagPID, true, unit.substr(0, 184));
  const auto both = [&](int flags = 0) {
    return Stream(begin).packet(tagPID, false, unit.substr(184, 184), flags);
  };
  const auto ended = [&](Stream stream) {
    return stream.packet(tagPID, false, unit.substr(368)).tagged(second, text("b")).audio(0).text;
  };
  auto missing = both(), repeated = both(), restarted = both(), amid = both();
  missing.text = begin.text;
  repeated.text += repeated.text.substr(repeated.text.size() - 188);
  restarted.packet(tagPID, false, unit.substr(368)).counters[tagPID] = 2;
  amid.text += "junkGG" + std::string(100, 'x');
  const Strings next{"101000 TXXX=b"}, all{"100000 TIT2=one TXXX=" + value, next[0]};
  check({
      {"a packet is missing", ended(missing), next},
      {"a packet comes twice", ended(repeated), all},
      {"counters begin anew", restarted.tagged(second, text("b")), all},
      {"transmission error", ended(both(0x80)), next},
      {"other bytes between", ended(amid), all},
      {"other bytes before", "GG" + ended(missing), next},
  });
}

TEST(TimedTagReaderTest, TimesTagsOfPackedAudioByTimestampsAndFrames) {
  const auto a = text("a"), b = text("b");
  const auto sound = audioFrame(), other = "\xFF\xFB\x90\x44 is MP3"s, title = frame("TIT2", "\3t");
  constexpr std::uint64_t hour = 3'600 * second;
  check({
      {"no timestamps", sound + sound + sound + a + sound, {"100064 TXXX=a"}},
      {"timestamps",
       stamp(wrap - second, title) + sound + a + stamp(second / 2, title) + b + audioFrame(2) + b +
           sound,
       {"100000 TIT2=t", "101500 TXXX=a", "101500 TIT2=t", "101500 TXXX=b", "101543 TXXX=b"}},
      {"after days",
       stamp(0) + stamp(12 * hour) + stamp(24 * hour) + stamp(36 * hour % wrap, title),
       {"129700000 TIT2=t"}},
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
      {"no timescale", box("ftyp", "") + movie(7, 0) + message(1, 1, day, a) + first, {}},
      {"from the fragment",
       init + first + message(0, 10, 15, a) + fragment(7, (day + 4) * 1'000),
       {"105500 TXXX=a"}},
      {"other messages",
       init + message(1, 1, day, a, "urn:x") + message(2, 1, day, a) + message(1, 0, day, a) +
           box("emsg", "\1\0\0\0short"s) + message(1, 1, day, a + std::string(300'000, ' ')) +
           first,
       {}},
      {"another track",
       init + message(1, 1, 5, a) + fragment(8, 0) + fragment(7, 5'000) + first,
       {"100000 TXXX=a"}},
      {"large boxes",
       init + box("free", std::string(300'000, ' ')) + message(1, 1, day, a) +
           "\0\0\0\1mdat\0\0\0\0\0\0\0\x12??"s + first,
       {"100000 TXXX=a"}},
      {"a broken box", init + "\0\0\0\4moof????????"s + message(1, 1, day, a) + first, {}},
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
      {"several strings", tag(frame("TXXX", "\3k\0a\0b"s) + frame("TIT2", "\3c\0d"s)),
       "TXXX=a/b TIT2=c/d"},
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
  EXPECT_EQ(readWhole(stamp(0) + text("d") + audioFrame() + text("e").substr(0, 15)),
            Strings{"5000 TXXX=d"});
  reader.beginRun(6);
  EXPECT_EQ(readWhole(Stream().tables().audio(second).tagged(second, text("f")).text),
            Strings{"6000 TXXX=f"});
  reader.beginRun(7);
  EXPECT_EQ(readWhole(box("ftyp", "") + movie(1, 10) + fragment(1, 0) + "\0\1\0\0mdat"s),
            Strings{});
  reader.beginRun(8);
  EXPECT_EQ(readWhole(message(1, 10, 20, text("g")) + fragment(1, 10)), Strings{"9000 TXXX=g"});
}

TEST(TimedTagReaderTest, HoldsAndPassesOverNoMoreThanItMust) {
  const auto large = tag(frame("TXXX", std::string(300'000, 'x')));
  EXPECT_EQ(read(begun().unit(tagPID, pes(0, large, {}, 0)).tagged(second, text("b"))),
            Strings{"101000 TXXX=b"});
  EXPECT_EQ(read(audioFrame() + large + text("b") + audioFrame()), Strings{"100021 TXXX=b"});
  Stream many = Stream().tables();
  std::string tags, messages;
  for (int i = 0; i < 1'100; ++i) {
    many.tagged(0, text("a"));
    tags += text("a");
    messages += message(1, 1, 0, text("a"));
  }
  EXPECT_EQ(read(many.audio(0)).size(), 1'024U);
  EXPECT_EQ(read(tags + audioFrame()).size(), 1'024U);
  EXPECT_EQ(read(box("ftyp", "") + movie(1, 1) + messages + fragment(1, 0)).size(), 1'024U);
}

TEST(TimedTagReaderTest, ReadsWhateverBytesCome) {
  const auto texts = tag(frame("TXXX", "\1\xFF\xFEk\0\0\0\xFF\xFE\xE9\0"s) + frame("TIT2", "\3x"));
  const std::string good[] = {
      Stream()
          .tables({tagPID, otherTagPID}, 0x100, 50)
          .tagged(0, texts)
          .audio(0, 0)
          .unit(otherTagPID, pes(second, texts + texts, {}, 0), 40)
          .tagged(second, text("x")),
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
      if (below(2) == 0) {
        stream[at] = static_cast<char>(stream[at] ^ 1 << below(8));
      } else {
        stream.replace(at, below(200), good[i % 3], below(good[i % 3].size()), below(200));
      }
      if (stream.empty()) stream = "G";
    }
    found += read(stream).size();
  }
  EXPECT_GT(found, 1'000U);  // Most mutants are still read for the most part.
}

}  // namespace
}  // namespace xel
