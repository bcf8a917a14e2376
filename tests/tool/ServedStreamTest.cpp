#include <set>
#include <string>
#include <variant>

#include <gtest/gtest.h>

#include "xel/platform/JSONValue.h"

#include "MediaPlaylist.h"
#include "PlaylistWriter.h"
#include "ServedStream.h"

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
  const MediaPlaylist window = parsed(writer.playlist(1, 2));
  EXPECT_EQ(window.mediaSequence, 1u);
  EXPECT_FALSE(window.isFinished);
  ASSERT_EQ(window.segments.size(), 1u);
  ASSERT_EQ(window.segments[0].texts.size(), 1u);
  EXPECT_EQ(window.segments[0].texts[0].value, "c");
}

ServedStream liveStream(double duration) {
  ServedStream::Settings settings;
  settings.kind = StreamKind::live;
  settings.preroll = true;
  settings.liveDuration = duration;
  settings.url = "https://localhost/streams/1";
  settings.trackingURL = "https://localhost/track/1";
  return ServedStream(std::move(settings));
}

TEST(ServedStream, ALiveDocumentAlwaysKnowsTheTextsPublished) {
  ServedStream stream = liveStream(90.5);
  EXPECT_TRUE(stream.isNextSegmentDue()) << "a player that does not poll is not waited for";
  JSONValue document = JSONValue::parse(stream.fetchDocument()).value;
  stream.documentSent();
  const auto known = [&](const MediaPlaylist& playlist) {
    for (const auto& segment : playlist.segments) {
      for (const auto& text : segment.texts) EXPECT_TRUE(document["tags"].has(text.value));
    }
  };
  known(parsed(stream.prerollPlaylist()));

  std::set<std::uint64_t> segments;
  double duration = 0;
  std::size_t polls = 1;
  for (bool finished = false; !finished;) {
    if (!stream.isNextSegmentDue()) {
      document = JSONValue::parse(stream.fetchDocument()).value;
      EXPECT_FALSE(stream.isNextSegmentDue()) << "the document has not been sent yet";
      stream.documentSent();
      ++polls;
      ASSERT_TRUE(stream.isNextSegmentDue());
    }
    const MediaPlaylist playlist = parsed(stream.fetchPlaylist());
    EXPECT_LE(playlist.segments.size(), 6u);
    known(playlist);
    for (std::size_t i = 0; i < playlist.segments.size(); ++i) {
      if (segments.insert(playlist.mediaSequence + i).second) {
        duration += playlist.segments[i].duration;
      }
    }
    finished = playlist.isFinished;
  }
  EXPECT_EQ(duration, 90.5);
  EXPECT_GT(polls, 2u);
  EXPECT_TRUE(document["breaks"].has("break-3"));
}

TEST(ServedStream, AGivenDocumentGetsAStreamToFit) {
  const auto given = [](const char* text) {
    return std::make_shared<const GivenDocument>(GivenDocument{text, JSONValue::parse(text).value});
  };
  ServedStream::Settings settings;
  settings.kind = StreamKind::vod;
  settings.document = given(R"({"times":{"70":[]},"cuepoints":[{"start":30,"end":40.5}]})");
  ServedStream vod(settings);
  EXPECT_EQ(vod.fetchDocument(), settings.document->text);
  EXPECT_EQ(parsed(vod.fetchPlaylist()).segments.size(), 40u);

  settings.kind = StreamKind::live;
  settings.document = given(R"({"tags":{"second":{},"first":{}}})");
  ServedStream live(settings);
  live.fetchDocument();
  EXPECT_TRUE(live.isNextSegmentDue());
  const auto playlist = parsed(live.fetchPlaylist());
  EXPECT_EQ(playlist.segments[0].texts[0].value, "second");
  EXPECT_EQ(playlist.segments[1].texts[0].value, "first");
  std::size_t fetches = 1;
  while (!parsed(live.fetchPlaylist()).isFinished) ++fetches;
  EXPECT_EQ(fetches, 3u) << "twelve seconds: the tags and a tail";
}

}  // namespace
}  // namespace xel::serve
