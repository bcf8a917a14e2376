#include <limits>
#include <map>
#include <random>
#include <set>

#include <boost/json.hpp>

#include "support/Session.h"

namespace xel::test {
namespace {

namespace json = boost::json;

constexpr std::size_t documents = 1000;
constexpr const char* eventTypes[] = {"start", "firstquartile", "midpoint", "thirdquartile",
                                      "complete"};

/// Documents that are mostly sound, with gaps, wrong types and odd numbers. The same seed gives the
/// same ones on every machine, which the standard's distributions would not.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}

  std::size_t below(std::size_t bound) { return engine_() % bound; }
  bool oneIn(std::size_t n) { return below(n) == 0; }
  std::string adKey(std::size_t first) { return "ad" + std::to_string(first + below(30)); }
  double time() {
    using Limits = std::numeric_limits<double>;
    const double odd[] = {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e300,
                          -0.5};
    return oneIn(50) ? odd[below(std::size(odd))] : below(600) / 10.0;
  }

  /// Its ads are some of 30, from the first one on.
  std::string document(bool live, std::size_t firstAd) {
    auto builder = live ? StreamInfoBuilder::live() : StreamInfoBuilder::vod();
    for (std::size_t i = below(5); i > 0; --i) {
      builder.addBreak("break" + std::to_string(i), below(60));
      while (!oneIn(3)) builder.addAd(adKey(firstAd), below(80) / 8.0);
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
  void check(Session& session) {
    for (const auto& event : session.host->events()) follow(event);
    Lines sent;
    for (const auto& [request, time] : session.server().pings()) {
      sent.push_back(*request.trackingEvent + " " + request.url);
    }
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
    countdowns += event.name == "didCountdownTo";
    const auto row = pinged.find(event.name);
    if (row == pinged.end()) return;
    for (const auto& name : row->second) {
      expectPings(name, *event.ad);
      if (const auto creative = event.ad->selectedCreative()) expectPings(name, *creative);
    }
  }

  void expectPings(const std::string& event, const TrackedEvents& tracked) {
    for (const auto& url : tracked.trackingURLsForEvent(event).value_or(Lines())) {
      expectedPings.push_back(event + " " + url);
    }
  }

  std::set<std::string> started;
  std::shared_ptr<XELAdBreakInfo> announced;
  std::shared_ptr<XELAd> current;
  Lines expectedPings;
  std::size_t breakEnds = 0;
  std::size_t countdowns = 0;
};

TEST(RandomDocuments, PolledOneAfterAnotherKeepTheRules) {
  Session session;
  auto answer = Session::goodAnswer(true);
  answer.pollingFrequency = 1;
  Random random(1);
  for (std::size_t i = 0; i < documents; ++i) {
    const std::string document = random.document(true, i);
    session.server().answer(session.liveDocument, {200, document, random.below(30) / 10.0});
  }
  session.open(answer);
  for (std::size_t i = 0; i < documents * 10; ++i) {
    for (int text = 0; text < 5; ++text) {
      const std::string ad = random.adKey(i / 10);
      session.display->reportTXXX(ad + "," + eventTypes[random.below(std::size(eventTypes))]);
    }
    session.display->reportProgress(random.oneIn(10) ? random.time() : i / 5.0);
    session.loop().advance(0.1);
  }
  Rules rules;
  rules.check(session);
  EXPECT_GT(rules.started.size(), documents / 5);
  EXPECT_GT(rules.breakEnds, documents / 10);
  EXPECT_GT(rules.countdowns, documents);
}

TEST(RandomDocuments, PlayedOnDemandKeepTheRules) {
  std::size_t started = 0, breakEnds = 0, countdowns = 0;
  for (std::uint32_t seed = 0; seed < documents && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Session session;
    Random random(seed);
    session.openVOD(random.document(false, 0));
    double time = 0;
    for (int tick = 0; tick < 100; ++tick) {
      time = random.oneIn(4) ? random.time() : time + 0.2;
      session.display->reportProgress(time);
      session.manager->contentTimeForStreamTime(time);
      session.manager->streamTimeForContentTime(time);
      session.manager->previousCuepointForStreamTime(time);
    }
    session.loop().runUntilIdle();
    Rules rules;
    rules.check(session);
    started += rules.started.size();
    breakEnds += rules.breakEnds;
    countdowns += rules.countdowns;
  }
  EXPECT_GT(started, documents / 2);
  EXPECT_GT(breakEnds, documents / 4);
  EXPECT_GT(countdowns, documents);
}

}  // namespace
}  // namespace xel::test
