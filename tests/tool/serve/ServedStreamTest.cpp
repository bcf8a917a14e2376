#include <memory>
#include <string>
#include <utility>
#include <variant>

#include <gtest/gtest.h>

#include "xel/platform/JSONValue.h"

#include "play/MediaPlaylist.h"
#include "serve/PlaylistWriter.h"
#include "serve/ServedStream.h"

namespace xel::serve {
namespace {

MediaPlaylist parsed(const std::string& text) {
  return std::get<MediaPlaylist>(parsePlaylist(text));
}

TEST(PlaylistWriter, PutsEachTextBeforeItsSegment) {
  const PlaylistWriter writer(5.5, {{0, "a,b "}, {1.9996, "c"}, {3, "no\nline"}, {5.5, "late"}});
  EXPECT_EQ(writer.wholePlaylist(),
            "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:2\n#EXT-X-MEDIA-SEQUENCE:0\n"
            "#XEL-TXXX:0.000,a,b \n#EXTINF:2.000,\nsegment-0.ts\n"
            "#XEL-TXXX:0.000,c\n#EXTINF:2.000,\nsegment-1.ts\n"
            "#EXTINF:1.500,\nsegment-2.ts\n#EXT-X-ENDLIST\n");
}

TEST(ServedStream, ALiveDocumentAlwaysKnowsTheTextsPublished) {
  ServedStream::Settings settings;
  settings.kind = StreamKind::live;
  settings.preroll = true;
  settings.liveDuration = 90.5;
  ServedStream stream(std::move(settings));
  EXPECT_TRUE(stream.isNextSegmentDue()) << "a player that does not poll is not waited for";
  std::size_t polls = 0;
  std::size_t published = 0;
  double duration = 0;
  MediaPlaylist playlist;
  JSONValue document;
  do {
    if (polls == 0 || !stream.isNextSegmentDue()) {
      document = JSONValue::parse(stream.fetchDocument()).value;
      EXPECT_FALSE(stream.isNextSegmentDue()) << "the document has not been sent yet";
      stream.documentSent();
      ASSERT_TRUE(stream.isNextSegmentDue());
      ++polls;
    }
    playlist = parsed(stream.fetchPlaylist());
    EXPECT_LE(playlist.segments.size(), 6u);
    EXPECT_LE(playlist.mediaSequence, published) << "a segment was left out";
    for (const auto& segment : playlist.segments) {
      for (const auto& text : segment.texts) EXPECT_TRUE(document["tags"].has(text.value));
    }
    for (const std::size_t first = playlist.mediaSequence;
         published < first + playlist.segments.size(); ++published) {
      duration += playlist.segments[published - first].duration;
    }
  } while (!playlist.isFinished);
  EXPECT_EQ(duration, 90.5);
  EXPECT_GT(polls, 2u);
  EXPECT_TRUE(document["breaks"].has("preroll"));
  EXPECT_TRUE(document["breaks"].has("break-3"));
}

TEST(ServedStream, AGivenDocumentGetsAStreamToFit) {
  const auto serve = [](StreamKind kind, const char* text) {
    ServedStream::Settings settings;
    settings.kind = kind;
    settings.document =
        std::make_shared<const GivenDocument>(GivenDocument{text, JSONValue::parse(text).value});
    return ServedStream(std::move(settings));
  };
  ServedStream vod = serve(StreamKind::vod, R"({"times":{"70":[]},"cuepoints":[{"end":40.5}]})");
  EXPECT_EQ(parsed(vod.fetchPlaylist()).segments.size(), 40u);
  ServedStream live = serve(StreamKind::live, R"({"tags":{"second":{},"first":{}}})");
  live.fetchDocument();
  EXPECT_TRUE(live.isNextSegmentDue());
  const auto playlist = parsed(live.fetchPlaylist());
  EXPECT_EQ(playlist.segments[0].texts[0].value, "second");
  EXPECT_EQ(playlist.segments[1].texts[0].value, "first");
  live.fetchPlaylist();
  live.fetchPlaylist();
  EXPECT_TRUE(parsed(live.fetchPlaylist()).isFinished) << "twelve seconds: the tags and a tail";
}

}  // namespace
}  // namespace xel::serve
