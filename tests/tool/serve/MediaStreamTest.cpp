#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "xel/platform/JSONValue.h"

#include "common/TemporaryFolder.h"
#include "play/MediaPlaylist.h"
#include "serve/MediaStream.h"
#include "serve/MediaTagger.h"
#include "serve/ServedStream.h"

namespace xel::serve {
namespace {

constexpr std::uint64_t clockMask = (std::uint64_t{1} << 33) - 1;

std::shared_ptr<const MediaLibrary> testMedia() {
  static const auto library = std::make_shared<const MediaLibrary>(XEL_TEST_MEDIA);
  return library;
}

MediaPlaylist parsed(const std::string& text) {
  return std::get<MediaPlaylist>(parsePlaylist(text));
}

std::uint64_t numberAt(std::string_view bytes, std::size_t place, std::size_t size) {
  std::uint64_t number = 0;
  for (const char byte : bytes.substr(place, size)) {
    number = number << 8 | static_cast<unsigned char>(byte);
  }
  return number;
}

std::size_t sizeAt(std::string_view bytes, std::size_t place) {
  std::size_t size = 0;
  for (const char byte : bytes.substr(place, 4)) size = size << 7 | (byte & 0x7F);
  return size;
}

/// The text of an ID3 tag with one frame.
std::string textOf(std::string_view tag) {
  EXPECT_EQ(numberAt(tag, 0, 6), 0x494433040000U) << "ID3v2.4 without flags";
  EXPECT_EQ(sizeAt(tag, 6), tag.size() - 10);
  EXPECT_EQ(sizeAt(tag, 14), tag.size() - 20);
  EXPECT_EQ(tag.substr(10, 4), "TXXX");
  EXPECT_EQ(numberAt(tag, 20, 2), 0x0300U) << "UTF-8 without a description";
  return std::string(tag.substr(22, tag.find('\0', 22) - 22));
}

/// Reads the segments of one rendition, and checks what a strict demuxer would.
struct TransportReader {
  std::uint64_t tagPID = ~std::uint64_t{0};  ///< Until a map has named it.
  std::uint64_t tagPackets = 0;
  std::vector<StreamText> texts;

  /// @param start of the segment, in seconds; texts are found relative to its first picture.
  void read(std::string_view segment, double start) {
    struct Unit {
      bool isPicture;
      std::string bytes;
      std::uint64_t ticks() const {
        const auto bits = numberAt(bytes, 9, 5);
        return (bits >> 33 & 7) << 30 | (bits >> 17 & 0x7FFF) << 15 | (bits >> 1 & 0x7FFF);
      }
    };
    std::vector<Unit> units;
    ASSERT_EQ(segment.size() % 188, 0u);
    for (; !segment.empty(); segment.remove_prefix(188)) {
      const auto header = numberAt(segment, 0, 4);
      const auto pid = header >> 8 & 0x1FFF;
      const bool begins = (header & 0x400000) != 0;
      const std::size_t adaptation = (header & 0x20) != 0 ? 1 + numberAt(segment, 4, 1) : 0;
      const auto payload = segment.substr(0, 188).substr(4 + adaptation);
      if (pid == 0x1000) readMap(payload);
      if (pid == 0x100 && begins) units.push_back({true, std::string(payload)});
      if (pid != tagPID) continue;
      EXPECT_EQ(header & 15, tagPackets++ & 15) << "continuity";
      if (begins) units.push_back({false, {}});
      units.back().bytes += payload;
    }
    const auto first =
        std::find_if(units.begin(), units.end(), [](auto& u) { return u.isPicture; });
    ASSERT_NE(first, units.end());
    std::uint64_t last = 0;
    for (const Unit& unit : units) {
      const auto ticks = (unit.ticks() - first->ticks()) & clockMask;
      EXPECT_GE(ticks, std::exchange(last, ticks)) << "a text stands before the next picture";
      if (unit.isPicture) continue;
      EXPECT_EQ(numberAt(unit.bytes, 0, 4), 0x1BDu);
      EXPECT_EQ(numberAt(unit.bytes, 4, 2), unit.bytes.size() - 6);
      texts.push_back({start + static_cast<double>(ticks) / 90000,
                       textOf(std::string_view(unit.bytes).substr(14))});
    }
  }

  void readMap(std::string_view payload) {
    const auto section = payload.substr(1, 3 + (numberAt(payload, 2, 2) & 0xFFF));
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::size_t bit = 0; bit < 8 * section.size(); ++bit) {
      const auto next = numberAt(section, bit / 8, 1) >> (7 - bit % 8) & 1;
      crc = crc << 1 ^ ((crc >> 31 ^ next) != 0 ? 0x04C11DB7 : 0);
    }
    EXPECT_EQ(crc, 0u) << "the checksum over all of the map";
    using namespace std::string_view_literals;
    EXPECT_EQ(section.substr(12, 17), "\x25\x0F\xFF\xFFID3 \xFFID3 \0\x1F\0\1"sv);
    const auto stream = section.substr(section.size() - 4 - 20, 20);
    EXPECT_EQ(stream[0], 0x15);
    EXPECT_EQ(stream.substr(5), "\x26\x0D\xFF\xFFID3 \xFFID3 \0\x0F"sv);
    tagPID = numberAt(stream, 1, 2) & 0x1FFF;
  }
};

void expectTexts(const std::vector<StreamText>& found, const std::vector<StreamText>& expected,
                 double tolerance) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].value, expected[i].value);
    EXPECT_NEAR(found[i].time, expected[i].time, tolerance) << found[i].value;
  }
}

TEST(MediaLibrary, MakesTheMediaOnceAndLeavesNothingWhenItCannot) {
  testMedia();
  const TemporaryFolder folder;
  const auto media = folder.path() / "media";
  const auto fault = [&media] {
    try {
      const MediaLibrary made(media);
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  const std::string path = std::getenv("PATH");
  setenv("PATH", folder.path().c_str(), 1);
  EXPECT_NO_THROW(MediaLibrary{XEL_TEST_MEDIA}) << "what is there needs no ffmpeg";
  EXPECT_NE(fault().find("install the package ffmpeg"), std::string::npos);
  std::ofstream(folder.path() / "ffmpeg") << "#!/bin/sh\necho No such encoder >&2\nexit 3\n";
  std::filesystem::permissions(folder.path() / "ffmpeg", std::filesystem::perms::owner_all);
  EXPECT_NE(fault().find("No such encoder"), std::string::npos);
  setenv("PATH", path.c_str(), 1);
  for (const auto& left : std::filesystem::directory_iterator(media)) {
    EXPECT_EQ(left.path().filename(), "lock");
  }
}

TEST(MediaStream, CarriesEachTextAtItsTimeInEachVariant) {
  const StreamPlan plan = mediaPlan(StreamKind::vod, 0);
  const std::string master = MediaStream::masterPlaylist("main");
  std::size_t place = 0;
  for (const Rendition rendition : {Rendition::low, Rendition::high}) {
    place = master.find("BANDWIDTH=", place) + 10;
    const double bandwidth = std::stod(master.substr(place));
    EXPECT_EQ(master.substr(master.find("avc1.", place), 11), "avc1.42c01e");
    MediaStream stream(testMedia(), plan, false);
    TransportReader reader;
    double start = 0, peak = 0;
    std::size_t number = 0;
    for (const auto& segment : parsed(stream.playlist(rendition, 0)).segments) {
      const std::string bytes = stream.segment(rendition, number++).value();
      EXPECT_NE(bytes.find(std::string("\0\0\1\x67\x42\xC0\x1E", 7)), std::string::npos)
          << "the codec that the master playlist names";
      reader.read(bytes, start);
      start += segment.duration;
      peak = std::max(peak, 8 * static_cast<double>(bytes.size()) / segment.duration);
    }
    EXPECT_EQ(start, plan.duration);
    EXPECT_FALSE(stream.segment(rendition, number));
    EXPECT_LE(peak, bandwidth);
    EXPECT_GE(peak, bandwidth / 2);
    expectTexts(reader.texts, textsOf(plan), 1.0 / 90000);
  }
}

TEST(MediaTagger, CutsTextsOfAnyLengthAndCountsOnAtTheWrapOfTheClock) {
  std::vector<StreamText> texts = {
      {0, ""}, {1.71, "before"}, {1.72, "after"}, {1.99, "at the end"}};
  for (const std::size_t size : {145, 146, 147, 148, 329, 330, 331, 332, 2000}) {
    texts.insert(texts.begin() + 1, {0.5, std::string(size, 'x')});
  }
  TransportReader reader;
  const auto& content = MediaLibrary::part("content");
  reader.read(taggedTransportStream(testMedia()->segment(content, Rendition::low, 1), texts, 0), 0);
  expectTexts(reader.texts, texts, 1.0 / 90000);
  std::size_t packets = 0;
  for (const StreamText& text : texts) packets += packetsOf(text);
  EXPECT_EQ(reader.tagPackets, packets);
}

TEST(MediaStream, IsPublishedAsTimePassesAlikeInAllRenditions) {
  double now = 1000;
  ServedStream session({.kind = StreamKind::live,
                        .preroll = true,
                        .liveDuration = 70,
                        .media = testMedia(),
                        .now = [&now] { return now; }});
  MediaStream& stream = *session.media("main");
  EXPECT_FALSE(stream.segment(Rendition::low, 0)) << "nothing has been published";
  std::map<std::size_t, int> discontinuities;
  std::vector<std::pair<std::size_t, bool>> windows;
  std::vector<StreamText> texts;
  double published = 0;
  for (; windows.size() < 100 && (windows.empty() || !windows.back().second); now += 1) {
    const auto document = JSONValue::parse(session.fetchDocument()).value;
    const std::string text = stream.playlist(Rendition::low, now);
    EXPECT_EQ(
        std::regex_replace(stream.playlist(Rendition::high, now), std::regex("high-"), "low-"),
        text);
    const MediaPlaylist playlist = parsed(text);
    const std::size_t end = playlist.mediaSequence + playlist.segments.size();
    EXPECT_LE(playlist.segments.size(), 6u);
    EXPECT_TRUE(stream.segment(Rendition::high, end - 1));
    EXPECT_FALSE(stream.segment(Rendition::high, end));
    // A segment's number among the discontinuities stays the same from one refresh to the next.
    const std::regex counted("DISCONTINUITY(-SEQUENCE:(\\d+))?\n|low-(\\d+)");
    int count = 0;
    for (std::sregex_iterator at(text.begin(), text.end(), counted), none; at != none; ++at) {
      if ((*at)[3].matched) {
        EXPECT_EQ(discontinuities.try_emplace(std::stoul((*at)[3]), count).first->second, count);
      } else {
        count += (*at)[2].matched ? std::stoi((*at)[2]) : 1;
      }
    }
    const std::size_t before = windows.empty() ? 0 : windows.back().first;
    for (std::size_t i = before; i < end; ++i) {
      for (const auto& [offset, value] : playlist.segments[i - playlist.mediaSequence].texts) {
        EXPECT_TRUE(document["tags"].has(value)) << value;
        texts.push_back({published + offset, value});
      }
      published += playlist.segments[i - playlist.mediaSequence].duration;
    }
    EXPECT_LE(published, now - 1000 + 6);
    EXPECT_GT(published + 2, std::min(now - 1000 + 6, 70.0)) << "the next one is due later";
    windows.emplace_back(end, playlist.isFinished);
  }
  EXPECT_GE(published, 70);
  expectTexts(texts, textsOf(mediaPlan(StreamKind::live, 70)), 0.001);
  EXPECT_EQ(windows[windows.size() - 2].first, windows.back().first)
      << "a player skips a last segment that comes with the end mark";
  EXPECT_EQ(discontinuities.rbegin()->second, 9)
      << "content, three ads, content, three ads, content up to its end, and from its start";
}

}  // namespace
}  // namespace xel::serve
