#include <functional>

#include "support/Session.h"

namespace xel::test {
namespace {

/// What of a session is still there, once the session itself has let go of it.
struct Remains {
  explicit Remains(const Session& session)
      : manager(session.manager), host(session.host), display(session.display) {}
  Lines names() const {
    Lines names;
    if (!manager.expired()) names.push_back("manager");
    if (!host.expired()) names.push_back("host");
    if (!display.expired()) names.push_back("display");
    if (!monitor.expired()) names.push_back("monitor");
    return names;
  }
  std::weak_ptr<XELStreamManager> manager;
  std::weak_ptr<RecordingDelegate> host;
  std::weak_ptr<ScriptedDisplay> display;
  std::weak_ptr<XELVideoDisplayDelegate> monitor;
};

struct Release {
  const char* what;
  void (*run)(Session& session);
  /// Whether the host may hear more.
  bool goesOn;
};

constexpr Release releases[] = {
    {"manager", [](Session& s) { s.manager.reset(); }, false},
    {"display", [](Session& s) { s.display.reset(); }, true},
    {"host", [](Session& s) { s.host.reset(); }, false},
    {"all", [](Session& s) { s.manager.reset(), s.display.reset(), s.host.reset(); }, false},
    {"another stream", [](Session& s) { s.manager->requestStream(Session::request(false)); },
     true}};

/// A whole session in which every call of the delegate happens.
void play(Session& session, const Remains& remains, bool live) {
  auto info = live ? StreamInfoBuilder::live() : StreamInfoBuilder::vod();
  info.addBreak("x", 1).addAd("a", 4).addAd("b", 4).addBreak("y", 20).addAd("c", 4);
  auto answer = Session::goodAnswer(live);
  if (live) answer.prerollManifest = "https://media.example/preroll.m3u8";
  session.open(answer, info.build());
  const auto report = [&](auto&& what) {
    if (const auto display = remains.display.lock()) what(*display);
    session.loop().advance(0.5);
  };
  report([](auto& display) { display.reportReady(); });
  for (const auto& event : info.events()) {
    report([&](auto& display) { display.reportTXXX(event.text); });
    report([&](auto& display) { display.reportProgress(event.time); });
  }
  report([](auto& display) { display.reportFailure(nullptr); });
  session.server().answer(session.vodURL, {500, "late"});
  if (session.manager) session.manager->requestStream(Session::request(false));
  session.loop().advance(100);
}

TEST(LettingGo, InsideAnyCallIsSafeAndFinal) {
  for (const bool live : {true, false}) {
    for (const char* call :
         {"didInitializeStream", "didReceiveError", "streamManagerIsReadyForPlayback",
          "adBreakDidStart", "adDidStart", "adDidCrossFirstQuartile", "adDidCrossMidpoint",
          "adDidCrossThirdQuartile", "adDidComplete", "adBreakDidEnd", "didCountdownTo",
          "didUpdateCuepoints"}) {
      if (live && std::string(call) == "didUpdateCuepoints") continue;
      for (const Release& release : releases) {
        SCOPED_TRACE((live ? "live " : "VOD ") + std::string(call) + ": " + release.what);
        Session session;
        Remains remains(session);
        bool released = false;
        int after = 0;
        session.host->onEvent = [&](const RecordingDelegate::Event& event) {
          after += released;
          if (released || event.name != call) return;
          if (const auto display = remains.display.lock()) remains.monitor = display->delegate();
          released = true;
          release.run(session);
        };
        play(session, remains, live);
        EXPECT_TRUE(released);
        EXPECT_TRUE(release.goesOn || after == 0);
        if (session.host) session.host->onEvent = nullptr;
        session.manager.reset(), session.host.reset(), session.display.reset();
        EXPECT_TRUE(release.goesOn || session.loop().timerCount() == 0);
        session.loop().clear();
        EXPECT_EQ(session.server().outstanding(), 0u);
        EXPECT_EQ(remains.names(), Lines());
      }
    }
  }
}

struct InFlight : testing::Test {
  Session session;
  Remains remains{session};
};

TEST_F(InFlight, TheStreamRequestKeepsTheManagerUntilItIsAnswered) {
  session.server().answer(session.liveURL, {200, Session::goodAnswer(true).build(), 3});
  session.manager->requestStream(Session::request(true));
  session.manager.reset(), session.display.reset();
  session.loop().advance(2);
  EXPECT_EQ(remains.names(), (Lines{"manager", "host", "display"}));
  session.loop().advance(60);
  EXPECT_EQ(session.host->lines(), Lines{"didInitializeStream stream-1"});
  EXPECT_EQ(remains.names(), Lines{"host"});
  EXPECT_EQ(session.loop().timerCount(), 0u);
  EXPECT_EQ(session.server().requests().size(), 2u);
}

TEST(InFlightDocument, KeepsTheMonitorButTouchesNeitherHostNorDisplay) {
  for (const bool live : {true, false}) {
    Session session;
    Remains remains(session);
    session.server().answer(live ? session.liveDocument : session.vodDocument,
                            {200, StreamInfoBuilder::vod().addAd("a", 4).build(), 3});
    session.open(Session::goodAnswer(live));
    remains.monitor = session.display->delegate();
    session.manager.reset();
    EXPECT_EQ(session.loop().timerCount(), 0u);
    EXPECT_EQ(remains.names(), (Lines{"host", "display", "monitor"}));
    session.loop().advance(60);
    EXPECT_EQ(session.host->lines(), Lines{"didInitializeStream stream-1"});
    EXPECT_TRUE(session.display->loads().empty());
    EXPECT_EQ(session.server().requests().size(), 2u);
    EXPECT_EQ(remains.names(), (Lines{"host", "display"}));
  }
}

TEST_F(InFlight, PingsKeepNothing) {
  session.server().answerOtherPings({500, "", 3});
  session.openVOD(StreamInfoBuilder::vod().addAd("a", 4).build());
  remains.monitor = session.display->delegate();
  session.progress({0});
  session.manager.reset(), session.display.reset(), session.host.reset();
  EXPECT_EQ(remains.names(), Lines());
  EXPECT_EQ(session.server().outstanding(), 3u);
  session.loop().advance(3);
  const std::string failed = "Internal Error: Tracking ping failed for event: ";
  session.expectedLog = {failed + "start", failed + "start", failed + "creativeview"};
}

}  // namespace
}  // namespace xel::test
