#include <limits>
#include <map>
#include <random>
#include <set>

#include <boost/json.hpp>

#include "support/Session.h"

namespace xel::test {
namespace {

namespace json = boost::json;

constexpr std::uint32_t sessions = 1000;

/// Documents that are mostly sound, with gaps, wrong types and odd numbers. The same seed gives the
/// same ones on every machine, which the standard's distributions would not.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}

  std::size_t below(std::size_t bound) { return engine_() % bound; }
  bool oneIn(std::size_t n) { return below(n) == 0; }
  std::string adKey() { return "ad" + std::to_string(below(30)); }
  std::string mark() {
    const char* types[] = {"start", "firstquartile", "midpoint", "thirdquartile", "complete"};
    return adKey() + "," + types[below(std::size(types))];
  }
  double time() {
    using Limits = std::numeric_limits<double>;
    const double odd[] = {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e300,
                          -0.5};
    return oneIn(50) ? odd[below(std::size(odd))] : below(600) / 10.0;
  }

  std::string document(bool live) {
    auto builder = live ? StreamInfoBuilder::live() : StreamInfoBuilder::vod();
    for (std::size_t i = below(5); i > 0; --i) {
      builder.addBreak("break" + std::to_string(i), below(60));
      while (!oneIn(3)) builder.addAd(adKey(), below(80) / 8.0);
    }
    json::value document = json::parse(builder.build());
    spoil(document);
    std::string text = json::serialize(document);
    if (oneIn(20)) text.resize(below(text.size()));
    return text;
  }

 private:
  void spoil(json::value& value) {
    const json::value odd[] = {
        nullptr, true,       -1, 2,       1e300,          -0x1p63,
        0.5,     UINT64_MAX, "", "start", json::array{1}, json::object{{"type", "start"}}};
    if (oneIn(40)) value = odd[below(std::size(odd))];
    if (value.is_object()) {
      for (auto& member : value.as_object()) spoil(member.value());
    } else if (value.is_array()) {
      for (auto& element : value.as_array()) spoil(element);
    } else if (value.is_string() && oneIn(20)) {
      value.as_string().resize(below(value.as_string().size() + 1));
    }
  }

  std::mt19937 engine_;
};

/// What must hold of the calls and pings of one monitor, whatever it is told.
struct Rules {
  explicit Rules(Session& session) {
    for (const auto& event : session.host->events()) follow(event);
    Lines sent;
    for (const auto& ping : session.server().pings()) sent.push_back(ping.request.url);
    EXPECT_EQ(sent, expectedPings);
    session.expectedLog = session.platform.log().lines();
    for (const auto& line : session.expectedLog) {
      EXPECT_EQ(line, "Internal Error: No tracking pings for current ad.");
    }
  }

  void follow(const RecordingDelegate::Event& event) {
    static const std::map<std::string, Lines> pinged = {
        {"adDidStart", {"start", "creativeview"}},
        {"adDidCrossFirstQuartile", {"firstquartile"}},
        {"adDidCrossMidpoint", {"midpoint"}},
        {"adDidCrossThirdQuartile", {"thirdquartile"}},
        {"adDidComplete", {"complete"}}};
    if (event.name == "adBreakDidStart") announced = event.adBreakInfo;
    if (event.name == "adDidStart") {
      EXPECT_TRUE(started.insert(*event.ad->adKey()).second) << event.line << " again";
      EXPECT_EQ(event.ad->adPosition() == 1, announced == event.ad->adBreakInfo()) << event.line;
      current = event.ad;
    }
    EXPECT_TRUE(!event.ad || event.ad == current) << event.line;
    if (event.name == "adBreakDidEnd") {
      EXPECT_TRUE(current && current->adBreakInfo() == event.adBreakInfo) << event.line;
      current.reset();
      ++breakEnds;
    }
    if (!pinged.contains(event.name)) return;
    for (const auto& name : pinged.at(event.name)) {
      expectPings(event.ad->trackingURLsForEvent(name));
      const auto creative = event.ad->selectedCreative();
      if (creative) expectPings(creative->trackingURLsForEvent(name));
    }
  }

  void expectPings(const std::optional<Lines>& urls) {
    if (urls) expectedPings.insert(expectedPings.end(), urls->begin(), urls->end());
  }

  std::set<std::string> started;
  std::shared_ptr<XELAdBreakInfo> announced;
  std::shared_ptr<XELAd> current;
  Lines expectedPings;
  std::size_t breakEnds = 0;
};

TEST(RandomDocuments, KeepTheRules) {
  for (const bool live : {true, false}) {
    std::size_t started = 0, breakEnds = 0;
    for (std::uint32_t seed = 0; seed < sessions && !HasFailure(); ++seed) {
      SCOPED_TRACE((live ? "live " : "VOD ") + std::to_string(seed));
      Session session;
      Random random(seed);
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
      const Rules rules(session);
      started += rules.started.size();
      breakEnds += rules.breakEnds;
    }
    EXPECT_GT(started, sessions / 2);
    EXPECT_GT(breakEnds, sessions / 4);
  }
}

}  // namespace
}  // namespace xel::test
