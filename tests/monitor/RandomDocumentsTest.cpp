#include <map>
#include <random>

#include "support/RandomDocuments.h"
#include "support/Session.h"
#include "support/StreamRules.h"

namespace xel::test {
namespace {

constexpr std::uint32_t sessions = 1000;

/// The pings that belong to a delegate call: of which events, and all their URLs.
Lines pingsWith(const RecordingDelegate::Event& event) {
  static const std::map<std::string, Lines> pinged = {
      {"adDidStart", {"start", "creativeview"}},
      {"adDidCrossFirstQuartile", {"firstquartile"}},
      {"adDidCrossMidpoint", {"midpoint"}},
      {"adDidCrossThirdQuartile", {"thirdquartile"}},
      {"adDidComplete", {"complete"}}};
  Lines urls;
  const auto names = pinged.find(event.name);
  if (names == pinged.end()) return urls;
  const auto add = [&urls](const std::optional<Lines>& more) {
    if (more) urls.insert(urls.end(), more->begin(), more->end());
  };
  for (const auto& name : names->second) {
    add(event.ad->trackingURLsForEvent(name));
    if (const auto creative = event.ad->selectedCreative()) {
      add(creative->trackingURLsForEvent(name));
    }
  }
  return urls;
}

/// Checks the calls and pings of a session that has been played.
StreamRules checked(Session& session) {
  StreamRules rules;
  Lines expected, sent;
  for (const auto& event : session.host->events()) {
    EXPECT_EQ(rules.follow(event), "") << event.line;
    for (auto& url : pingsWith(event)) expected.push_back(std::move(url));
  }
  for (const auto& ping : session.server().pings()) sent.push_back(ping.request.url);
  EXPECT_EQ(sent, expected);
  session.expectedLog = session.platform.log().lines();
  for (const auto& line : session.expectedLog) {
    EXPECT_EQ(line, "Internal Error: No tracking pings for current ad.");
  }
  return rules;
}

TEST(RandomDocuments, KeepTheRules) {
  for (const bool live : {true, false}) {
    std::size_t started = 0, breakEnds = 0;
    for (std::uint32_t seed = 0; seed < sessions && !HasFailure(); ++seed) {
      SCOPED_TRACE((live ? "live " : "VOD ") + std::to_string(seed));
      Session session;
      std::mt19937 engine(seed);
      // The same on every machine, which the standard's distributions would not be.
      RandomDocuments random([&engine](std::size_t bound) { return engine() % bound; });
      auto answer = Session::goodAnswer(live);
      answer.pollingFrequency = 1;
      for (int poll = 0; live && poll < 10; ++poll) {
        const std::string document = random.document(live);
        session.server().answer(session.liveDocument, {200, document, random.below(30) / 10.0});
      }
      session.open(answer, random.document(live));
      double time = 0;
      for (int tick = 0; tick < 100; ++tick) {
        time = random.oneIn(live ? 10 : 4) ? random.time() : time + 0.2;
        for (int text = 0; text < 5; ++text) session.display->reportTXXX(random.mark());
        session.display->reportProgress(time);
        session.manager->contentTimeForStreamTime(time);
        session.manager->streamTimeForContentTime(time);
        session.manager->previousCuepointForStreamTime(time);
        session.loop().advance(0.1);
      }
      const StreamRules rules = checked(session);
      started += rules.started.size();
      breakEnds += rules.breakEnds;
    }
    EXPECT_GT(started, sessions / 2);
    EXPECT_GT(breakEnds, sessions / 4);
  }
}

}  // namespace
}  // namespace xel::test
