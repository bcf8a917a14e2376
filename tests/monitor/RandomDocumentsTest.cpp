#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <set>

#include <boost/json.hpp>

#include "support/Session.h"

namespace xel::test {
namespace {

namespace json = boost::json;

/// Documents that are mostly sound, with gaps, wrong types and odd numbers. The same from the same
/// seed on every machine: the standard's distributions are not.
class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}

  std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(engine_()) % bound; }
  bool oneIn(std::uint32_t n) { return below(n) == 0; }
  std::string adKey(std::uint32_t first) { return "ad" + std::to_string(first + below(30)); }
  double time() {
    constexpr double odd[] = {std::numeric_limits<double>::quiet_NaN(),
                              std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(),
                              1e300,
                              -0x1p63,
                              0x1p63,
                              -0.5};
    return oneIn(50) ? odd[below(std::size(odd))] : below(600) / 10.0;
  }

  /// Its ads are some of 30, so that a monitor that has started those before has new ones to start.
  std::string document(std::uint32_t firstAd = 0) {
    json::object ads, breaks, tags, times;
    json::array cuepoints;
    for (std::uint32_t i = below(8); i > 0; --i) {
      const std::string ad = adKey(firstAd);
      ads[ad] = json::object{{"break", maybe(breakKey())},
                             {"vast", maybe(vast(ad))},
                             {"position", maybe(below(4))},
                             {"duration", maybe(below(80) / 8.0)}};
      for (const std::string type :
           {"start", "firstquartile", "midpoint", "thirdquartile", "complete"}) {
        const json::value event = {{"type", maybe(type)}, {"ad", maybe(ad)}};
        tags[ad + "," + type] = maybe(event);
        json::value& second = times[std::to_string(below(60))];
        if (!second.is_array()) second = json::array();
        second.as_array().push_back(maybe(event));
      }
      breaks[breakKey()] =
          maybe(json::value{{"ads", maybe(below(4))}, {"duration", maybe(below(40))}});
      cuepoints.push_back(
          maybe(json::value{{"start", maybe(below(60))}, {"end", maybe(below(80) / 2.0)}}));
    }
    std::string text = json::serialize(json::value{{"ads", maybe(ads)},
                                                   {"breaks", maybe(breaks)},
                                                   {"tags", maybe(tags)},
                                                   {"times", maybe(times)},
                                                   {"cuepoints", maybe(cuepoints)}});
    if (oneIn(20)) text.resize(below(static_cast<std::uint32_t>(text.size())));
    return text;
  }

 private:
  std::string breakKey() { return "break" + std::to_string(below(4)); }
  template <typename Sound>
  json::value maybe(const Sound& sound) {
    if (!oneIn(25)) return json::value_from(sound);
    const json::value odd[] = {nullptr,
                               true,
                               -1,
                               1e300,
                               -0x1p63,
                               "",
                               "odd",
                               json::array{1},
                               json::object{{"type", "start"}},
                               0.5,
                               0xFFFFFFFFFFFFFFFFu};
    return odd[below(std::size(odd))];
  }
  std::string vast(const std::string& ad) {
    std::string text = VastBuilder::typical(ad).tracking("midpoint", "not a URL").build();
    if (oneIn(6)) text.resize(below(static_cast<std::uint32_t>(text.size())));
    return text;
  }

  std::mt19937 engine_;
};

/// What must hold of the calls and pings of one monitor, whatever it is told.
class Rules {
 public:
  void check(const Session& session) {
    for (const auto& event : session.host->events()) follow(event);
    Lines sent;
    for (const auto& ping : session.server().pings()) {
      sent.push_back(*ping.request.trackingEvent + " " + ping.request.url);
    }
    EXPECT_EQ(sent, expectedPings_);

    Lines log = session.platform.log().lines();
    std::erase(log, "Internal Error: No tracking pings for current ad.");
    const auto refused = std::count(sent.begin(), sent.end(), "midpoint not a URL");
    EXPECT_EQ(log, Lines(refused, "Internal Error: Tracking ping failed for event: midpoint"));
  }
  std::size_t starts() const { return started_.size(); }
  std::size_t breakEnds() const { return breakEnds_; }
  std::size_t countdowns() const { return countdowns_; }

 private:
  void follow(const RecordingDelegate::Event& event) {
    static const std::map<std::string, std::string> pinged = {
        {"adDidStart", "start"},
        {"adDidCrossFirstQuartile", "firstquartile"},
        {"adDidCrossMidpoint", "midpoint"},
        {"adDidCrossThirdQuartile", "thirdquartile"},
        {"adDidComplete", "complete"}};
    const std::string& name = event.name;
    if (name == "adBreakDidStart") {
      announced_ = event.adBreakInfo;
    } else if (name == "adDidStart") {
      EXPECT_TRUE(started_.insert(*event.ad->adKey()).second) << event.line << " started twice";
      EXPECT_EQ(event.ad->adPosition() == 1, announced_ == event.ad->adBreakInfo()) << event.line;
      current_ = event.ad;
    } else if (name == "adBreakDidEnd") {
      EXPECT_TRUE(current_ && current_->adBreakInfo() == event.adBreakInfo) << event.line;
      current_.reset();
      ++breakEnds_;
    } else if (event.ad) {
      EXPECT_EQ(event.ad, current_) << event.line;
      countdowns_ += name == "didCountdownTo";
    }
    const auto row = pinged.find(name);
    if (row == pinged.end()) return;
    expectPings(*event.ad, row->second);
    if (row->second == "start") expectPings(*event.ad, "creativeview");
  }
  void expectPings(const XELAd& ad, const std::string& event) {
    const auto expect = [&](const TrackedEvents& tracked) {
      for (const auto& url : tracked.trackingURLsForEvent(event).value_or(Lines())) {
        expectedPings_.push_back(event + " " + url);
      }
    };
    expect(ad);
    if (const auto creative = ad.selectedCreative()) expect(*creative);
  }

  std::set<std::string> started_;
  std::shared_ptr<XELAdBreakInfo> announced_;
  std::shared_ptr<XELAd> current_;
  std::size_t breakEnds_ = 0;
  std::size_t countdowns_ = 0;
  Lines expectedPings_;
};

constexpr std::uint32_t documents = 1000;

TEST(RandomDocuments, PolledOneAfterAnotherKeepTheRules) {
  Session session;
  auto answer = StreamInitAnswerBuilder::live();
  answer.pollingFrequency = 1;
  Random random(1);
  for (std::uint32_t i = 0; i < documents; ++i) {
    session.server().answer(*answer.id3EventsURL,
                            {200, random.document(i), random.below(30) / 10.0});
  }
  session.open(answer);
  for (std::uint32_t i = 0; i < documents * 10; ++i) {
    constexpr const char* types[] = {"start", "firstquartile", "midpoint", "thirdquartile",
                                     "complete"};
    for (int text = 0; text < 5; ++text) {
      const std::string ad = random.adKey(i / 10);
      session.display->reportTXXX(ad + "," + types[random.below(std::size(types))]);
    }
    session.display->reportProgress(random.oneIn(10) ? random.time() : i / 5.0);
    session.loop().advance(0.1);
  }
  Rules rules;
  rules.check(session);
  EXPECT_GT(rules.starts(), documents / 5);
  EXPECT_GT(rules.breakEnds(), documents / 10);
  EXPECT_GT(rules.countdowns(), documents / 5);
}

TEST(RandomDocuments, PlayedOnDemandKeepTheRules) {
  std::size_t starts = 0;
  std::size_t breakEnds = 0;
  std::size_t countdowns = 0;
  for (std::uint32_t seed = 0; seed < documents; ++seed) {
    SCOPED_TRACE(seed);
    Session session;
    Random random(seed);
    session.openVOD(random.document());
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
    starts += rules.starts();
    breakEnds += rules.breakEnds();
    countdowns += rules.countdowns();
    if (testing::Test::HasFailure()) break;
  }
  EXPECT_GT(starts, documents / 2);
  EXPECT_GT(breakEnds, documents / 4);
  EXPECT_GT(countdowns, documents);
}

}  // namespace
}  // namespace xel::test
