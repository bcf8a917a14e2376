#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MediaServer.h"
#include "PlayedStream.h"
#include "serve/StreamPlan.h"

namespace xel {
namespace {

/// Seconds after playback stopped within which a fault is to be told, and one of a silent server;
/// printed beside what it took.
constexpr double faultLimit = 8;
constexpr double hangLimit = 15;
/// Turns of the loop after the last report, for one too many.
constexpr int moreTurns = 200;

struct BadStream {
  const char* fault;
  std::string url;
  const char* cause;
  double limit = faultLimit;
  /// Seconds of stream time that can be played before the fault shows.
  double playable = 0;
  std::shared_ptr<PlayedStream> stream = nullptr;
  double lastMove = 0;
  double lastTime = -1;
  double told = 0;
};

struct GstFailure : PlayerTest {
  MediaServer server;

  /// A stream of two renditions with the same fault.
  std::string vod(const std::string& name) {
    return server.add(name, serve::mediaPlan(serve::StreamKind::vod, 0));
  }
  std::string withoutSegment(const std::string& name, const std::string& number) {
    for (const char* each : {"/low-", "/high-"}) server.remove("/" + name + each + number + ".ts");
    return vod(name);
  }
  std::string hangingAt(const std::string& name, const std::vector<std::string>& files) {
    for (const std::string& file : files) server.hang("/" + name + "/" + file);
    return vod(name);
  }
};

TEST_F(GstFailure, IsToldOnceWithURLAndCauseSoonAfterPlaybackStopped) {
  const std::string noSegments = "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXT-X-ENDLIST\n";
  std::vector<BadStream> bad = {
      {"404", server.url() + "/none.m3u8", "HTTP status 404"},
      {"empty", server.addText("/empty.m3u8", ""), "enough data"},
      {"HTML", server.addText("/html.m3u8", "<html><body>Sign in</body></html>"),
       "no HLS playlist"},
      {"random bytes", server.addText("/random.m3u8", std::string(3000, '\x8A') + "\x01\x02"), ""},
      {"no segments", server.addText("/nothing.m3u8", noSegments), "playlist"},
      {"no connection", "http://127.0.0.1:1/main.m3u8", "cannot be reached"},
      {"no URL", "nonsense", "Invalid URI"},
      {"missing segment 20 s ahead", withoutSegment("missing", "11"), "404", faultLimit, 20},
      {"silent at the manifest", server.hang("/silent.m3u8"), "stopped answering", hangLimit},
      {"silent at the playlist", hangingAt("playlist", {"low.m3u8", "high.m3u8"}),
       "stopped answering", hangLimit},
      {"silent at the first segment", hangingAt("first", {"low-0.ts", "high-0.ts"}),
       "stopped answering", hangLimit},
      {"silent at a segment", hangingAt("later", {"low-3.ts", "high-3.ts"}), "stopped sending",
       hangLimit, 6},
  };
  const double begin = steadySeconds();
  for (BadStream& each : bad) {
    each.stream = PlayedStream::play(each.url);
    each.lastMove = begin;
  }

  // The longest time that the loop was held, as far as a timer can tell.
  double longestHold = 0;
  double earlier = steadySeconds();
  int turnsAfter = 0;
  const auto watch = loop()->every(0.005, [&] {
    const double now = steadySeconds();
    longestHold = std::max(longestHold, now - earlier);
    earlier = now;
    bool isAnyWaiting = false;
    for (BadStream& each : bad) {
      PlayedStream& stream = *each.stream;
      if (stream.lastTime != each.lastTime) each.lastMove = now;
      each.lastTime = stream.lastTime;
      if (each.told == 0 && !stream.failures.empty()) each.told = now;
      isAnyWaiting |= each.told == 0;
    }
    if (!isAnyWaiting && ++turnsAfter == moreTurns) loop()->stop();
  });
  loop()->run();
  loop()->cancel(watch);

  for (const BadStream& each : bad) {
    SCOPED_TRACE(each.fault);
    const auto& failures = each.stream->failures;
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_NE(failures[0].find(each.url), std::string::npos) << failures[0];
    EXPECT_NE(failures[0].find(each.cause), std::string::npos) << failures[0];
    EXPECT_EQ(each.stream->readies, each.playable > 0 ? 1 : 0);
    if (each.playable > 0) EXPECT_NEAR(each.lastTime, each.playable, 2.5);
    EXPECT_FALSE(each.stream->hasEnded);
    std::printf("%-28s %5.1f s after playback stopped: %s\n", each.fault, each.told - each.lastMove,
                failures[0].c_str());
  }
  std::printf("The main loop was never held for longer than %.0f ms.\n", 1000 * longestHold);
}

}  // namespace
}  // namespace xel
