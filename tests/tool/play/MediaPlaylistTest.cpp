#include <sstream>
#include <string>
#include <utility>
#include <variant>

#include <gtest/gtest.h>

#include "play/MediaPlaylist.h"
#include "play/StreamTimeline.h"

namespace xel {
namespace {

std::string described(const std::string& playlist) {
  const auto result = parsePlaylist(playlist);
  if (const auto* fault = std::get_if<PlaylistFault>(&result)) return fault->reason;
  if (const auto* master = std::get_if<MasterPlaylist>(&result)) return master->firstVariant;
  const auto& media = std::get<MediaPlaylist>(result);
  std::ostringstream text;
  text << media.mediaSequence << "/" << media.targetDuration << ":";
  for (const auto& segment : media.segments) {
    text << " " << segment.duration;
    for (const auto& timed : segment.texts)
      text << " (" << timed.offset << "|" << timed.value << ")";
  }
  return text.str() + (media.isFinished ? " end" : "");
}

TEST(MediaPlaylist, IsReadOrRefusedWithAReason) {
  const std::pair<std::string, std::string> cases[] = {
      {"#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:6\n#EXT-X-MEDIA-SEQUENCE:41\n"
       "#EXTINF:6,\na.ts\n#EXT-X-DISCONTINUITY\n#EXTINF:5.5,title, with comma\nb.ts\n",
       "41/6: 6 5.5"},
      // Texts belong to the segment that follows, as they are.
      {"#EXTM3U\r\n#XEL-TXXX:0,one\n#EXTINF:4,\r\na.ts\r\n#XEL-TXXX:1.5, two, and \r\n"
       "#XEL-TXXX:2,\n#EXTINF:4,\n#XEL-TXXX:3,late\nb.ts\n#XEL-TXXX:0,of none\n#EXT-X-ENDLIST",
       "0/0: 4 (0|one) 4 (1.5| two, and ) (2|) (3|late) end"},
      // Texts without an offset and segments without a duration are left out.
      {"#EXTM3U\nx.ts\n#XEL-TXXX:x,a\n#XEL-TXXX:-1,b\n#XEL-TXXX:nan,c\n#XEL-TXXX:1\n#EXTINF:4,\n\n"
       "a.ts\nb.ts\n#EXTINF:9,\n#EXT-X-ENDLIST\n",
       "0/0: 4 end"},
      {"#EXTM3U\n#EXT-X-STREAM-INF:A=1\n\n#c\n low.m3u8 \n#EXT-X-STREAM-INF:A=2\nhigh.m3u8\n",
       "low.m3u8"},
      {"#EXTM3U\n#EXT-X-STREAM-INF:A=1\n", "it names no variant stream"},
      {"", "it does not begin with #EXTM3U"},
      {"#EXTM3U\n#EXTINF:1e10,\na.ts\n", "line 2 has no duration that can be read"},
      {"#EXTM3U\n#EXT-X-MEDIA-SEQUENCE:99999999999999999999\n",
       "line 2 has no media sequence number that can be read"},
      {"#EXTM3U\n#EXTINF:4,\na.ts\n", "it has neither an end nor a target duration"},
  };
  for (const auto& [playlist, expected] : cases) EXPECT_EQ(described(playlist), expected);
}

MediaPlaylist playlistFrom(int sequence, const std::string& segments) {
  return std::get<MediaPlaylist>(parsePlaylist(
      "#EXTM3U\n#EXT-X-TARGETDURATION:6\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(sequence) + "\n" +
      segments));
}

TEST(StreamTimeline, AddsDecimalsToTheDecimalThatAReaderExpects) {
  std::string segments;
  for (int i = 0; i < 1000; ++i) segments += "#XEL-TXXX:0.3,x\n#EXTINF:6.006,\ns.ts\n";
  StreamTimeline timeline;
  timeline.append(playlistFrom(0, segments));
  EXPECT_EQ(timeline.end(), 6006.0);
  EXPECT_EQ(timeline.texts().rbegin()->first, 6000.294);
}

TEST(StreamTimeline, TellsSegmentsApartBySequence) {
  StreamTimeline timeline;
  timeline.append(playlistFrom(7, "#EXTINF:6,\na\n#EXTINF:6,\nb\n"));
  timeline.append(playlistFrom(8, "#EXTINF:6,\nb\n#XEL-TXXX:1,new\n#EXTINF:5,\nc\n"));
  EXPECT_EQ(timeline.texts().begin()->first, 13);
  EXPECT_EQ(timeline.append(playlistFrom(3, "#EXTINF:6,\nold\n")), 0u);
  EXPECT_EQ(timeline.end(), 17) << "an older playlist brings nothing";
  EXPECT_EQ(timeline.append(playlistFrom(12, "#EXTINF:2,\nf\n#EXT-X-ENDLIST\n")), 2u);
  EXPECT_EQ(timeline.end(), 19);
}

}  // namespace
}  // namespace xel
