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

/// A host application with its display and the ad server.
class Session {
 public:
  Session() {
    manager->setDelegate(host);
    host->onEvent = [this](const RecordingDelegate::Event& event) {
      catchUp();
      if (event.name != "didCountdownTo" || countdowns) journal_.push_back(event.line);
    };
  }

  static std::shared_ptr<XELLiveStreamRequest> liveRequest() {
    return XELLiveStreamRequest::initWithAssetKey("asset");
  }
  static std::shared_ptr<XELVODStreamRequest> vodRequest() {
    return XELVODStreamRequest::initWithContentSourceID_videoID("source", "video");
  }

  /// Requests a stream of the answer's type, and goes as far as it goes at once.
  void open(const StreamInitAnswerBuilder& answer, std::optional<std::string> document = {}) {
    const bool live = answer.type == "live";
    if (document) {
      server().answer(*(live ? answer.id3EventsURL : answer.timeEventsURL), {200, *document});
    }
    server().answer(live ? liveURL : vodURL, {200, answer.build()});
    if (live) {
      manager->requestStream(liveRequest());
    } else {
      manager->requestStream(vodRequest());
    }
    loop().runUntilIdle();
  }
  void openLive(std::string document) {
    open(StreamInitAnswerBuilder::live(), std::move(document));
  }
  void openVOD(std::string document) { open(StreamInitAnswerBuilder::vod(), std::move(document)); }

  void progress(const std::vector<double>& times) {
    for (const double time : times) display->reportProgress(time);
  }
  void metadata(const std::vector<const char*>& texts) {
    for (const char* text : texts) display->reportTXXX(text);
  }

  /// Requests, loads and delegate calls since the last call of this, in order; but what was
  /// requested and what was loaded between two delegate calls stand apart.
  Lines happened() {
    catchUp();
    return std::exchange(journal_, {});
  }

  CannedAdServer& server() const { return platform.server(); }
  VirtualRunLoop& loop() const { return platform.loop(); }

  SimulatedPlatform platform;
  const std::string liveURL = platform.liveInitURL("asset");
  const std::string vodURL = platform.vodInitURL("source", "video");
  std::shared_ptr<ScriptedDisplay> display = std::make_shared<ScriptedDisplay>();
  std::shared_ptr<RecordingDelegate> host = std::make_shared<RecordingDelegate>();
  std::shared_ptr<XELStreamManager> manager = XELStreamManager::initWithVideoDisplay(display);
  /// Whether countdowns are among what happened.
  bool countdowns = false;

 private:
  static std::string describe(const HTTPRequest& request) {
    if (!request.trackingEvent) return request.method + " " + request.url;
    const std::string base = "https://tracking.example/";
    const bool ours = request.url.starts_with(base);
    return "ping " + *request.trackingEvent + " " + request.url.substr(ours ? base.size() : 0);
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

/// A log line that the test does not expect fails it.
class SessionTest : public testing::Test, public Session {
 public:
  void TearDown() override { EXPECT_EQ(platform.log().lines(), expectedLog); }
  Lines expectedLog;
};

}  // namespace xel::test
