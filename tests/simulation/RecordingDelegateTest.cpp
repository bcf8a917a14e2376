#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/RecordingDelegate.h"
#include "xel/simulation/simulation.h"

namespace xel::simulation {
namespace {

struct RecordedSession : testing::Test {
  RecordedSession() {
    platform.server().answer(platform.vodInitURL("source", "video"),
                             {200, StreamInitAnswerBuilder::vod().build()});
    auto info = StreamInfoBuilder::vod();
    info.addBreak("break", 1).addAd("ad", 2);
    platform.server().answer("https://ads.example/vod.json", {200, info.build()});
    manager->setDelegate(host);
    manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID("source", "video"));
    platform.loop().runUntilIdle();
  }

  SimulatedPlatform platform;
  std::shared_ptr<ScriptedDisplay> display = std::make_shared<ScriptedDisplay>();
  std::shared_ptr<RecordingDelegate> host = std::make_shared<RecordingDelegate>();
  std::shared_ptr<XELStreamManager> manager = XELStreamManager::initWithVideoDisplay(display);
};

TEST_F(RecordedSession, LinesTellEachCallAsItWasAtThatMoment) {
  display->reportReady();
  display->play(0, 2, 0.75);
  display->reportFailure(nullptr);
  EXPECT_EQ(host->lines(),
            (std::vector<std::string>{
                "didInitializeStream stream-1", "didUpdateCuepoints [1-3]",
                "streamManagerIsReadyForPlayback", "adBreakDidStart break (1 ads, 2 s)",
                "adDidStart ad", "didUpdateCuepoints [1-3 played]", "adDidCrossFirstQuartile ad",
                "didReceiveError (no error object)"}));
}

TEST_F(RecordedSession, TheHookMayLetGoOfEverythingThePlatformOutlives) {
  host->onEvent = [this](const RecordingDelegate::Event& event) {
    if (event.name != "adDidStart") return;
    manager.reset();
    display.reset();
    host.reset();
    EXPECT_EQ(event.line, "adDidStart ad");
  };
  display->play(0, 10);
  EXPECT_EQ(host, nullptr);
  EXPECT_EQ(platform.loop().timerCount(), 0u);
}

}  // namespace
}  // namespace xel::simulation
