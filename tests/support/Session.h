#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/simulation.h"

namespace xel::test {

using namespace simulation;
using Lines = std::vector<std::string>;

/// A host application with its display and the ad server. A log line that the test does not expect
/// fails it.
struct Session {
  Session() {
    manager->setDelegate(host);
    host->onEvent = [this](const RecordingDelegate::Event& event) {
      catchUp();
      if (event.name != "didCountdownTo" || countdowns) journal_.push_back(event.line);
    };
  }
  ~Session() { EXPECT_EQ(platform.log().lines(), expectedLog); }

  static std::shared_ptr<XELStreamRequest> request(bool live) {
    if (live) return XELLiveStreamRequest::initWithAssetKey("asset");
    return XELVODStreamRequest::initWithContentSourceID_videoID("source", "video");
  }
  static StreamInitAnswerBuilder goodAnswer(bool live) {
    return live ? StreamInitAnswerBuilder::live() : StreamInitAnswerBuilder::vod();
  }
  const std::string& initURL(bool live) const { return live ? liveURL : vodURL; }

  /// Requests a stream of the answer's type, and goes as far as it goes at once.
  void open(const StreamInitAnswerBuilder& answer, std::optional<std::string> document = {}) {
    const bool live = answer.type == "live";
    if (document) server().answer(live ? liveDocument : vodDocument, {200, *document});
    server().answer(initURL(live), {200, answer.build()});
    manager->requestStream(request(live));
    loop().runUntilIdle();
  }
  void openLive(std::string document) { open(goodAnswer(true), std::move(document)); }
  void openVOD(std::string document) { open(goodAnswer(false), std::move(document)); }

  void progress(const std::vector<double>& times) {
    for (const double time : times) display->reportProgress(time);
  }
  void metadata(const std::vector<const char*>& texts) {
    for (const char* text : texts) display->reportTXXX(text);
  }

  /// Requests, loads and delegate calls since the last call of this, in order; but of what happens
  /// between two delegate calls, the loads come last.
  Lines happened() {
    catchUp();
    return std::exchange(journal_, {});
  }

  CannedAdServer& server() const { return platform.server(); }
  VirtualRunLoop& loop() const { return platform.loop(); }

  const std::string liveDocument = "https://ads.example/live.json";
  const std::string vodDocument = "https://ads.example/vod.json";
  SimulatedPlatform platform;
  const std::string liveURL = platform.liveInitURL("asset");
  const std::string vodURL = platform.vodInitURL("source", "video");
  std::shared_ptr<ScriptedDisplay> display = std::make_shared<ScriptedDisplay>();
  std::shared_ptr<RecordingDelegate> host = std::make_shared<RecordingDelegate>();
  std::shared_ptr<XELStreamManager> manager = XELStreamManager::initWithVideoDisplay(display);
  /// Whether countdowns are among what happened.
  bool countdowns = false;
  Lines expectedLog;

 private:
  static std::string describe(const HTTPRequest& request) {
    if (!request.trackingEvent) return request.method + " " + request.url;
    return "ping " + *request.trackingEvent + " " +
           request.url.substr(std::string("https://tracking.example/").size());
  }

  void catchUp() {
    for (; requestsSeen_ < server().requests().size(); ++requestsSeen_) {
      journal_.push_back(describe(server().requests()[requestsSeen_].request));
    }
    for (; display && loadsSeen_ < display->loads().size(); ++loadsSeen_) {
      const auto& load = display->loads()[loadsSeen_];
      journal_.push_back("load " + load.url);
      for (const JSONValue& track : load.subtitles) journal_.back() += " " + track.serialize();
    }
  }

  Lines journal_;
  std::size_t requestsSeen_ = 0;
  std::size_t loadsSeen_ = 0;
};

struct SessionTest : testing::Test, Session {};

}  // namespace xel::test
