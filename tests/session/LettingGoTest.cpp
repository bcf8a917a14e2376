#include <functional>
#include <tuple>

#include "support/Session.h"

namespace xel::test {
namespace {

/// Whether anything of a session is still there, once the session itself has let go of it.
class Remains {
 public:
  explicit Remains(const Session& session)
      : manager_(session.manager), host_(session.host), display_(session.display) {}
  void watchMonitor() {
    if (const auto display = display_.lock()) monitor_ = display->delegate();
  }
  std::shared_ptr<ScriptedDisplay> display() const { return display_.lock(); }
  Lines names() const {
    Lines names;
    if (!manager_.expired()) names.push_back("manager");
    if (!host_.expired()) names.push_back("host");
    if (!display_.expired()) names.push_back("display");
    if (!monitor_.expired()) names.push_back("monitor");
    return names;
  }

 private:
  std::weak_ptr<XELStreamManager> manager_;
  std::weak_ptr<RecordingDelegate> host_;
  std::weak_ptr<ScriptedDisplay> display_;
  std::weak_ptr<XELVideoDisplayDelegate> monitor_;
};

struct Release {
  const char* what;
  std::function<void(Session&)> run;
  /// Whether the host may still hear something.
  bool goesOn;
};

const Release releases[] = {
    {"Manager", [](Session& s) { s.manager.reset(); }, false},
    {"Display", [](Session& s) { s.display.reset(); }, true},
    {"Host", [](Session& s) { s.host.reset(); }, false},
    {"Everything",
     [](Session& s) {
       s.manager.reset();
       s.display.reset();
       s.host.reset();
     },
     false},
    {"HostFirst",
     [](Session& s) {
       s.host.reset();
       s.display.reset();
       s.manager.reset();
     },
     false},
    {"TheStreamForAnother", [](Session& s) { s.manager->requestStream(Session::vodRequest()); },
     true},
};

struct LettingGo : testing::TestWithParam<std::tuple<const char*, const char*>> {
  /// A whole session in which every call of the delegate happens.
  static void play(Session& session, Remains& remains, bool live) {
    auto info = live ? StreamInfoBuilder::live() : StreamInfoBuilder::vod();
    info.addBreak("x", 1).addAd("a", 4).addAd("b", 4).addBreak("y", 20).addAd("c", 4);
    auto answer = live ? StreamInitAnswerBuilder::live() : StreamInitAnswerBuilder::vod();
    if (live) answer.prerollManifest = "https://media.example/preroll.m3u8";
    session.open(answer, info.build());
    remains.watchMonitor();
    const auto report = [&](const std::function<void(ScriptedDisplay&)>& what) {
      if (const auto display = remains.display()) what(*display);
      session.loop().advance(0.5);
    };
    report([](auto& display) { display.reportReady(); });
    for (const auto& event : info.events()) {
      report([&](auto& display) { display.reportTXXX(event.text); });
      report([&](auto& display) { display.reportProgress(event.time); });
    }
    report([](auto& display) { display.reportProgress(100); });
    report([](auto& display) { display.reportFailure(nullptr); });
    session.server().answer(live ? session.liveURL : session.vodURL, {500, "late"});
    if (session.manager) session.manager->requestStream(Session::vodRequest());
    session.loop().advance(100);
  }
};

TEST_P(LettingGo, InsideACallIsSafeAndFinal) {
  const auto& [kind, call] = GetParam();
  const bool live = std::string(kind) == "live";
  for (const Release& release : releases) {
    SCOPED_TRACE(release.what);
    Session session;
    Remains remains(session);
    int before = 0;
    int after = 0;
    bool released = false;
    session.host->onEvent = [&, name = std::string(call)](const RecordingDelegate::Event& event) {
      ++(released ? after : before);
      if (released || event.name != name) return;
      released = true;
      release.run(session);
    };
    play(session, remains, live);
    EXPECT_TRUE(released);
    if (!release.goesOn) EXPECT_EQ(after, 0);

    if (session.host) session.host->onEvent = nullptr;
    session.manager.reset();
    session.host.reset();
    session.display.reset();
    if (!live || !release.goesOn) {
      EXPECT_EQ(session.loop().timerCount(), 0u);
      EXPECT_EQ(session.server().outstanding(), 0u);
    }
    session.loop().clear();
    EXPECT_EQ(remains.names(), Lines());
  }
}

std::string caseName(const testing::TestParamInfo<LettingGo::ParamType>& info) {
  return std::string(std::get<0>(info.param)) + "_" + std::get<1>(info.param);
}

#define CALLS_OF_EVERY_STREAM                                                                     \
  "didInitializeStream", "didReceiveError", "streamManagerIsReadyForPlayback", "adBreakDidStart", \
      "adDidStart", "adDidCrossFirstQuartile", "adDidCrossMidpoint", "adDidCrossThirdQuartile",   \
      "adDidComplete", "adBreakDidEnd", "didCountdownTo"
INSTANTIATE_TEST_SUITE_P(Live, LettingGo,
                         testing::Combine(testing::Values("live"),
                                          testing::Values(CALLS_OF_EVERY_STREAM)),
                         caseName);
INSTANTIATE_TEST_SUITE_P(VOD, LettingGo,
                         testing::Combine(testing::Values("vod"),
                                          testing::Values(CALLS_OF_EVERY_STREAM,
                                                          "didUpdateCuepoints")),
                         caseName);

class InFlight : public SessionTest {
 protected:
  InFlight() : remains(*this) {}
  void releaseEverythingButTheHost() {
    manager.reset();
    display.reset();
  }
  Remains remains;
};

TEST_F(InFlight, TheStreamRequestKeepsTheManagerUntilItIsAnswered) {
  server().answer(liveURL, {200, StreamInitAnswerBuilder::live().build(), 3});
  manager->requestStream(liveRequest());
  releaseEverythingButTheHost();
  loop().advance(2);
  EXPECT_EQ(remains.names(), (Lines{"manager", "host", "display"}));
  loop().advance(2);
  EXPECT_EQ(host->lines(), Lines{"didInitializeStream stream-1"});
  EXPECT_EQ(remains.names(), Lines{"host"});
  EXPECT_EQ(loop().timerCount(), 0u);
  loop().advance(60);
  EXPECT_EQ(server().requests().size(), 2u);
}

TEST_F(InFlight, ADocumentKeepsTheMonitorAndTheHostHearsNothing) {
  for (const bool live : {true, false}) {
    Session session;
    Remains left(session);
    const auto answer = live ? StreamInitAnswerBuilder::live() : StreamInitAnswerBuilder::vod();
    session.server().answer(*(live ? answer.id3EventsURL : answer.timeEventsURL),
                            {200, StreamInfoBuilder::vod().addAd("a", 4).build(), 3});
    session.open(answer);
    left.watchMonitor();
    session.manager.reset();
    EXPECT_EQ(session.loop().timerCount(), 0u);
    EXPECT_EQ(left.names(), (Lines{"host", "display", "monitor"}));
    session.loop().advance(60);
    EXPECT_EQ(session.host->lines(), Lines{"didInitializeStream stream-1"});
    EXPECT_EQ(session.server().requests().size(), 2u);
    EXPECT_EQ(left.names(), (Lines{"host", "display"}));
  }
}

TEST_F(InFlight, PingsKeepNothing) {
  server().answerOtherPings({500, "", 3});
  openVOD(StreamInfoBuilder::vod().addAd("a", 4).build());
  remains.watchMonitor();
  progress({0});
  releaseEverythingButTheHost();
  host.reset();
  EXPECT_EQ(remains.names(), Lines());
  EXPECT_EQ(server().outstanding(), 3u);
  loop().advance(3);
  const std::string failed = "Internal Error: Tracking ping failed for event: ";
  expectedLog = {failed + "start", failed + "start", failed + "creativeview"};
}

TEST_F(InFlight, EverythingEndsWithThePlatform) {
  Remains left = remains;
  {
    Session session;
    left = Remains(session);
    session.server().answerOtherPings({204, "", 9});
    session.openLive(StreamInfoBuilder::live().addAd("a", 4).build());
    left.watchMonitor();
    session.metadata({"a,start"});
    session.server().hang("https://ads.example/live.json");
    session.server().hang(session.vodURL);
    session.manager->requestStream(Session::vodRequest());
    session.loop().advance(2);
    EXPECT_EQ(session.server().outstanding(), 4u);
  }
  EXPECT_EQ(left.names(), Lines());
}

}  // namespace
}  // namespace xel::test
