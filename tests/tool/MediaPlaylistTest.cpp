#include <sstream>
#include <string>
#include <variant>

#include <gtest/gtest.h>

#include "MediaPlaylist.h"
#include "PlaylistURL.h"
#include "StreamTimeline.h"

namespace xel {
namespace {

std::string described(const std::variant<MediaPlaylist, MasterPlaylist, PlaylistFault>& result) {
  std::ostringstream text;
  if (const auto* fault = std::get_if<PlaylistFault>(&result)) {
    text << "fault: " << fault->reason;
  } else if (const auto* master = std::get_if<MasterPlaylist>(&result)) {
    text << "master: " << master->firstVariant;
  } else {
    const auto& media = std::get<MediaPlaylist>(result);
    text << media.mediaSequence << " target " << media.targetDuration << ":";
    for (const auto& segment : media.segments) {
      text << " " << segment.duration;
      for (const auto& timed : segment.texts)
        text << " (" << timed.offset << "|" << timed.value << ")";
    }
    if (media.isFinished) text << " end";
  }
  return text.str();
}

struct PlaylistCase {
  const char* behaviour;
  std::string text;
  const char* expected;
};

class ParsedPlaylist : public testing::TestWithParam<PlaylistCase> {};

TEST_P(ParsedPlaylist, Is) {
  EXPECT_EQ(described(parsePlaylist(GetParam().text)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    , ParsedPlaylist,
    testing::Values(
        PlaylistCase{"LiveWithSequenceAndUnknownTags",
                     "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:6\n"
                     "#EXT-X-MEDIA-SEQUENCE:41\n#EXTINF:6,\na.ts\n#EXT-X-DISCONTINUITY\n"
                     "#EXTINF:5.5,title, with comma\nb.ts\n",
                     "41 target 6: 6 5.5"},
        PlaylistCase{"CarriageReturnsAndNoLastLineEnd",
                     "#EXTM3U\r\n#EXTINF:4,\r\na.ts\r\n#EXT-X-ENDLIST", "0 target 0: 4 end"},
        PlaylistCase{"TextsBelongToTheSegmentThatFollowsAndAreNotTrimmed",
                     "#EXTM3U\n#XEL-TXXX:0,one\n#EXTINF:4,\na.ts\n#XEL-TXXX:1.5, two, and \r\n"
                     "#XEL-TXXX:2,\n#EXTINF:4,\n#XEL-TXXX:3,late\nb.ts\n#XEL-TXXX:0,of none\n"
                     "#EXT-X-ENDLIST\n",
                     "0 target 0: 4 (0|one) 4 (1.5| two, and ) (2|) (3|late) end"},
        PlaylistCase{"TextsWithoutAnOffsetAreSkipped",
                     "#EXTM3U\n#XEL-TXXX:x,a\n#XEL-TXXX:-1,b\n#XEL-TXXX:nan,c\n#XEL-TXXX:1\n"
                     "#EXTINF:4,\na.ts\n#EXT-X-ENDLIST\n",
                     "0 target 0: 4 end"},
        PlaylistCase{"ASegmentWithoutADurationIsNone",
                     "#EXTM3U\nx.ts\n#EXTINF:4,\n\na.ts\nb.ts\n#EXTINF:9,\n#EXT-X-ENDLIST\n",
                     "0 target 0: 4 end"},
        PlaylistCase{"MasterNamesItsFirstVariant",
                     "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\n\n#c\n low/v.m3u8 \n"
                     "#EXT-X-STREAM-INF:BANDWIDTH=2\nhigh.m3u8\n",
                     "master: low/v.m3u8"},
        PlaylistCase{"MasterWithoutVariant", "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\n",
                     "fault: it names no variant stream"},
        PlaylistCase{"OtherText", "<html>", "fault: it does not begin with #EXTM3U"},
        PlaylistCase{"NoText", "", "fault: it does not begin with #EXTM3U"},
        PlaylistCase{"DurationOutOfRange", "#EXTM3U\n#EXTINF:1e10,\na.ts\n#EXT-X-ENDLIST",
                     "fault: line 2 has no duration that can be read"},
        PlaylistCase{"SequenceBeyondItsRange",
                     "#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:99999999999999999999\n",
                     "fault: line 2 has no media sequence number that can be read"},
        PlaylistCase{"NeitherEndNorTargetDuration", "#EXTM3U\n#EXTINF:4,\na.ts\n",
                     "fault: it has neither an end nor a target duration"}),
    [](const auto& param) { return param.param.behaviour; });

MediaPlaylist playlistOf(const std::string& text) {
  return std::get<MediaPlaylist>(parsePlaylist("#EXTM3U\n#EXT-X-TARGETDURATION:6\n" + text));
}

TEST(StreamTimeline, AddsDecimalsToTheDecimalThatAReaderExpects) {
  std::string segments;
  for (int i = 0; i < 1000; ++i) segments += "#XEL-TXXX:0.3,x\n#EXTINF:6.006,\ns.ts\n";
  StreamTimeline timeline;
  timeline.append(playlistOf(segments));
  EXPECT_EQ(timeline.end(), 6006.0);
  EXPECT_EQ(timeline.texts().rbegin()->first, 6000.294);
}

TEST(StreamTimeline, TellsSegmentsApartBySequence) {
  StreamTimeline timeline;
  EXPECT_EQ(timeline.append(playlistOf("#EXT-X-MEDIA-SEQUENCE:7\n#EXTINF:6,\na\n#EXTINF:6,\nb\n")),
            0u);
  EXPECT_EQ(timeline.append(playlistOf("#EXT-X-MEDIA-SEQUENCE:8\n#EXTINF:6,\nb\n"
                                       "#XEL-TXXX:1,new\n#EXTINF:5,\nc\n")),
            0u);
  EXPECT_EQ(timeline.end(), 17);
  EXPECT_EQ(timeline.texts().begin()->first, 13);

  EXPECT_EQ(timeline.append(playlistOf("#EXT-X-MEDIA-SEQUENCE:3\n#EXTINF:6,\nold\n")), 0u);
  EXPECT_EQ(timeline.end(), 17) << "an older playlist brings nothing";

  EXPECT_EQ(
      timeline.append(playlistOf("#EXT-X-MEDIA-SEQUENCE:12\n#EXTINF:2,\nf\n#EXT-X-ENDLIST\n")), 2u);
  EXPECT_EQ(timeline.end(), 19);
  EXPECT_TRUE(timeline.isFinished());
}

TEST(ResolveURL, FollowsReferencesAndRefusesWhatIsNoURL) {
  const std::string base = "https://h.example:8443/a/master.m3u8?x=1";
  EXPECT_EQ(resolveURL(base, "v/1.m3u8?y=2"), "https://h.example:8443/a/v/1.m3u8?y=2");
  EXPECT_EQ(resolveURL(base, "../1.m3u8"), "https://h.example:8443/1.m3u8");
  EXPECT_EQ(resolveURL(base, "//other.example/1"), "https://other.example/1");
  EXPECT_EQ(resolveURL(base, "http://other.example/1"), "http://other.example/1");
  EXPECT_EQ(resolveURL(base, "a b"), std::nullopt);
  EXPECT_EQ(resolveURL("no base", "a"), std::nullopt);
}

}  // namespace
}  // namespace xel
