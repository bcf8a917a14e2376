#pragma once

#include <memory>
#include <string>
#include <utility>

#include "xel/platform/Platform.h"
#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/FixedEnvironment.h"
#include "xel/simulation/RecordingLog.h"
#include "xel/simulation/ScriptedDisplay.h"
#include "xel/simulation/VirtualRunLoop.h"

namespace xel::bench {

/// A host that counts what it hears of.
class CountingHost final : public XELStreamManagerDelegate {
 public:
  void streamManager_didInitializeStream(XELStreamManager&, const std::string&) override {}
  void streamManager_didReceiveError(XELStreamManager&,
                                     const std::shared_ptr<const Error>&) override {
    ++errors;
  }
  void streamManager_adDidStart(XELStreamManager&, const std::shared_ptr<XELAd>&) override {
    ++starts;
  }
  void streamManager_ad_didCountdownTo(XELStreamManager&, const std::shared_ptr<XELAd>&,
                                       double) override {
    ++countdowns;
  }

  std::size_t errors = 0;
  std::size_t starts = 0;
  std::size_t countdowns = 0;
};

/// Answers every stream request and document request alike, and pings with nothing; keeps none.
class AnsweringServer final : public HTTPClient {
 public:
  AnsweringServer(std::shared_ptr<RunLoop> loop, std::string answer, std::string document)
      : loop_(std::move(loop)), answer_(std::move(answer)), document_(std::move(document)) {}

  void send(HTTPRequest request, Completion completion) override {
    HTTPResult result;
    result.response.status = request.trackingEvent ? 204 : 200;
    if (!request.trackingEvent) {
      result.response.body = request.method == "POST" ? answer_ : document_;
    }
    loop_->post([completion = std::move(completion), result = std::move(result)]() mutable {
      completion(std::move(result));
    });
  }

 private:
  const std::shared_ptr<RunLoop> loop_;
  const std::string answer_;
  const std::string document_;
};

/// The library on a virtual clock, with a server that has one document for all.
struct World {
  explicit World(const std::string& document);

  const std::shared_ptr<simulation::VirtualRunLoop> loop =
      std::make_shared<simulation::VirtualRunLoop>();
  const ScopedPlatform installed;
};

/// One on-demand session, opened and ready to be played.
struct VODSession {
  explicit VODSession(World& world);

  std::shared_ptr<simulation::ScriptedDisplay> display =
      std::make_shared<simulation::ScriptedDisplay>();
  std::shared_ptr<CountingHost> host = std::make_shared<CountingHost>();
  std::shared_ptr<XELStreamManager> manager = XELStreamManager::initWithVideoDisplay(display);
};

}  // namespace xel::bench
