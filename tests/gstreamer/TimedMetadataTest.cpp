#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "MediaServer.h"
#include "PlayedStream.h"
#include "serve/StreamPlan.h"

namespace xel {
namespace {

using serve::StreamKind;
using serve::StreamText;

/// Seconds of stream time that were played without a jump.
using Span = std::pair<double, double>;

std::vector<StreamText> textsIn(const std::vector<Span>& spans, const serve::StreamPlan& plan) {
  std::vector<StreamText> texts;
  for (const auto& [from, to] : spans) {
    for (const StreamText& text : serve::textsOf(plan)) {
      if (text.time >= from && text.time < to) texts.push_back(text);
    }
  }
  return texts;
}

/// Each text once, in order, and at its time; prints how exactly.
/// @param grain milliseconds between the places that a text can have in the media.
void expectTexts(const char* what, const std::vector<PlayedStream::Seen>& seen,
                 const std::vector<StreamText>& expected, double grain = 0) {
  std::vector<std::string> seenTexts, expectedTexts;
  for (const auto& each : seen) seenTexts.push_back(each.text);
  for (const auto& each : expected) expectedTexts.push_back(each.value);
  EXPECT_EQ(seenTexts, expectedTexts);
  ASSERT_FALSE(expected.empty());
  std::vector<double> errors;
  for (std::size_t i = 0; i < std::min(seen.size(), expected.size()); ++i) {
    errors.push_back(1000 * std::abs(seen[i].position - expected[i].time));
  }
  std::sort(errors.begin(), errors.end());
  const auto percentile = [&errors](double share) {
    return errors[static_cast<std::size_t>(std::ceil(share * errors.size())) - 1];
  };
  std::printf(
      "%s: %zu texts; |position - intended time|: median %.1f ms, p95 %.1f ms, max %.1f ms\n", what,
      errors.size(), percentile(0.5), percentile(0.95), errors.back());
#ifdef __SANITIZE_ADDRESS__
  // Slow code says little about time; what comes and in which order is checked all the same.
  (void)grain;
#else
  EXPECT_LE(percentile(0.95), 40 + grain);
#endif
}

struct GstTimedMetadata : PlayerTest {
  MediaServer server;
  const serve::StreamPlan vod = serve::mediaPlan(StreamKind::vod, 0);
};

TEST_F(GstTimedMetadata, ComesOnceAndInTimeOverDiscontinuitiesAWrapAndAChangeOfVariant) {
  const auto stream = PlayedStream::play(server.add("vod", vod));
  stream->runToEnd();
  EXPECT_EQ(stream->failures, std::vector<std::string>());
  EXPECT_EQ(stream->readies, 1);
  EXPECT_NEAR(stream->player->currentTime(), vod.duration, 0.1);
  EXPECT_NEAR(stream->ticks, vod.duration / 0.2, 3) << "progress every 0.2 s of stream time";
  EXPECT_GT(server.countOf("/low-"), 0u);
  EXPECT_GT(server.countOf("/high-"), 0u) << "the player never changed the variant";
  expectTexts("on demand", stream->seen, textsIn({{0, vod.duration}}, vod));
}

TEST_F(GstTimedMetadata, ComesOnceAndInTimeInALiveStream) {
  const auto live = serve::mediaPlan(StreamKind::live, 70);
  const auto stream = PlayedStream::play(server.add("live", live, true));
  double first = -1;
  stream->at(0, [&] { first = stream->lastTime; });
  stream->at(60, [&] { stream->stop(); });
  stream->runToEnd();
  EXPECT_EQ(stream->failures, std::vector<std::string>());
  EXPECT_FALSE(stream->player->duration().has_value());
  expectTexts("live", stream->seen, textsIn({{first, 60}}, live));
}

TEST_F(GstTimedMetadata, FollowsSeeksAlsoWhilePaused) {
  const auto stream = PlayedStream::play(server.add("vod", vod));
  GstMediaPlayer& player = *stream->player;
  stream->at(11.5, [&] { player.seek(23.5); });
  stream->at(26, [&] { player.seek(9.5); });
  stream->at(12.5, [&] {
    player.pause();
    player.seek(34.6);
  });
  stream->at(34.6, [&] {
    EXPECT_EQ(stream->lastTime, 34.6) << "a seek while paused is reported, once and exactly";
    EXPECT_FALSE(player.isPlaying());
    player.play();
  });
  stream->at(39.4, [&] { stream->stop(); });
  stream->runToEnd();
  EXPECT_EQ(stream->failures, std::vector<std::string>());
  expectTexts("seeks", stream->seen,
              textsIn({{0, 11.5}, {23.5, 26}, {9.5, 12.5}, {34.6, 39.4}}, vod));
}

TEST_F(GstTimedMetadata, OfSeveralSeeksTheLastCountsAndOneBeyondTheEndComesToTheEnd) {
  const auto stream = PlayedStream::play(server.add("vod", vod));
  GstMediaPlayer& player = *stream->player;
  stream->awaitedReport = "ready";
  stream->inReport = [&] {
    player.seek(20);
    player.seek(5);
  };
  stream->at(0, [&] {
    EXPECT_NEAR(stream->lastTime, 5, 0.1);
    player.seek(40);
    player.seek(1);
    player.seek(1e300);
  });
  stream->runToEnd();
  EXPECT_TRUE(stream->hasEnded);
  EXPECT_EQ(stream->failures, std::vector<std::string>());
  EXPECT_NEAR(player.currentTime(), vod.duration, 0.2) << "a tick from the end at most";
}

TEST_F(GstTimedMetadata, IsReadFromPackedAudio) {
  server.add("vod", vod);
  const auto stream = PlayedStream::play(
      server.addText("/audio.m3u8",
                     "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=70000,CODECS=\"mp4a.40.2\"\n"
                     "vod/audio.m3u8\n"));
  stream->at(27, [&] { stream->stop(); });
  stream->runToEnd();
  EXPECT_EQ(stream->failures, std::vector<std::string>());
  constexpr double aacFrame = 1000.0 * 1024 / 48000;
  expectTexts("packed audio", stream->seen, textsIn({{0, 27}}, vod), aacFrame);
}

}  // namespace
}  // namespace xel
