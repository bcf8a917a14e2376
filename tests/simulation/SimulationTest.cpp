#include <chrono>
#include <cmath>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "xel/simulation/simulation.h"

#include "vast/XELVastParser.h"

namespace xel::simulation {
namespace {

TEST(VastBuilder, TextsReachTheAdAsTheyWereGiven) {
  const std::string awkward = "a&b <\"é\"> [X]]>\n";
  const std::string url = "https://a.example/?x=1&y=<2>";
  const std::string document = VastBuilder()
                                   .ad(awkward)
                                   .tracking("START", url)
                                   .creative("c1", 2)
                                   .universalAdId(awkward, "u")
                                   .companion(300, 250, url, "api")
                                   .build();
  const auto ads = XELVastParser::init()->parseVastDocument(document);
  ASSERT_EQ(ads.size(), 1u) << document;
  EXPECT_EQ(ads[0]->adID(), awkward);
  EXPECT_EQ(ads[0]->trackingURLsForEvent("start"), std::vector{url});
  ASSERT_EQ(ads[0]->creatives().size(), 1u);
  EXPECT_EQ(ads[0]->creatives()[0]->sequence(), 2);
  EXPECT_EQ(ads[0]->creatives()[0]->universalAdIdRegistry(), awkward);
  ASSERT_EQ(ads[0]->companions().size(), 1u);
  EXPECT_EQ(ads[0]->companions()[0]->staticResourceURL(), url);
}

TEST(StreamInfoBuilder, EventsOfShortAndFractionalAdsLieWithinThemInOrder) {
  const struct {
    double start, duration;
    std::vector<double> times;
  } cases[] = {
      {30, 10, {30, 32, 35, 37, 39}},
      {30.5, 10, {31, 33, 35, 38, 40}},
      {30.2, 0.5, {31, 31, 31, 31, 31}},
  };
  for (const auto& [start, duration, times] : cases) {
    std::vector<double> found;
    for (const auto& event :
         StreamInfoBuilder::vod().addBreak("b", start).addAd("a", duration).events()) {
      found.push_back(event.time);
    }
    EXPECT_EQ(found, times) << start;
  }
  double earlier = 0;
  for (const auto& event :
       StreamInfoBuilder::live().addBreak("b", 5).addAd("a1", 8).addAd("a2", 0.5).events()) {
    EXPECT_GT(event.time, std::exchange(earlier, event.time));
  }
  EXPECT_LT(earlier, 13.5);
}

TEST(CannedAdServer, HoldsToTheRulesOfAClientAndKeepsTheLastAnswer) {
  const auto loop = std::make_shared<VirtualRunLoop>();
  CannedAdServer server(loop);
  std::ostringstream results;
  const auto send = [&](HTTPRequest request) {
    server.send(request, [&](const HTTPResult& result) {
      results << (result.error ? result.error->code : result.response.status) << "@" << loop->now()
              << " ";
    });
  };
  server.hang("https://hung.example/");
  server.answer("https://slow.example/", {200, "", 6});
  server.answer("https://slow.example/", {503, "", 2});
  send({.url = "ftp://refused.example/"});
  send({.url = "https://unknown.example/"});
  send({.url = "https://unknown.example/ping", .trackingEvent = "start"});
  send({.url = "https://slow.example/", .timeout = std::chrono::seconds(5)});
  send({.url = "https://slow.example/"});
  send({.url = "https://slow.example/"});
  send({.url = "https://hung.example/"});
  EXPECT_EQ(results.str(), "") << "completed before send returned";
  EXPECT_EQ(server.outstanding(), 7u);
  loop->advance(100);
  EXPECT_EQ(results.str(), "2@0 404@0 204@0 503@2 503@2 3@5 3@60 ");
}

TEST(VirtualRunLoop, RunsWhatIsDueInOrderOfTimeWithoutDrift) {
  VirtualRunLoop loop;
  std::ostringstream notes;
  const auto note = [&](const char* what) {
    return [&, what] { notes << what << '@' << loop.now() << ' '; };
  };
  RunLoop::TimerID once = 0;
  once = loop.every(1, [&, owned = std::make_shared<std::string>("once@")] {
    loop.cancel(once);
    notes << *owned << loop.now() << ' ';
  });
  loop.after(3, note("late"));
  loop.every(2, note("tick"));
  loop.after(2, [&] {
    loop.post(note("posted"));
    loop.after(0.5, note("nested"));
  });
  loop.post(note("first"));
  for (int step = 0; step < 40; ++step) loop.advance(0.1);
  EXPECT_EQ(notes.str(), "first@0 once@1 tick@2 posted@2 nested@2.5 late@3 tick@4 ");
  EXPECT_EQ(loop.timerCount(), 1u);
}

TEST(ScriptedMediaPlayer, TellsEachObserverAtItsOwnIntervalsWhileOneItemPlays) {
  const auto player = std::make_shared<ScriptedMediaPlayer>();
  const auto show = [&] { player->replaceCurrentItem(player->makeItem(player->makeAsset("u"))); };
  std::ostringstream notes;
  const auto observe = [&](double interval, const char* what, std::function<void()> then) {
    return player->addPeriodicTimeObserver(interval, [&, what, then] {
      notes << what << '@' << player->currentTime() << ' ';
      then();
    });
  };
  observe(0.5, "a", [] {});
  MediaPlayer::TimeObserverToken once = 0;
  once = observe(0.2, "once", [&] { player->removeTimeObserver(once); });
  EXPECT_TRUE(std::isnan(player->currentTime()));
  player->play();
  player->advance(1);
  show();
  for (int step = 0; step < 12; ++step) player->advance(0.1);
  player->seek(7.25);
  player->advance(0.5);
  EXPECT_EQ(std::exchange(notes, {}).str(), "once@0.2 a@0.5 a@1 a@7.25 a@7.75 ");
  observe(0.3, "next", show);
  player->advance(10);
  EXPECT_EQ(notes.str(), "next@8.05 ");
  EXPECT_EQ(player->currentTime(), 0);
}

}  // namespace
}  // namespace xel::simulation
