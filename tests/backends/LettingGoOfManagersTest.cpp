#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"
#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/simulation.h"

#include "backends/NginxProcess.h"

namespace xel {
namespace {

using namespace simulation;

/// An ad server whose streams have one ad with pings, from the request to the last ping.
class StreamServer {
 public:
  StreamServer() {
    server_.prepare(
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 "
        "-subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 -keyout key.pem -out ca.pem");
    const std::string base = "https://" + host();
    auto answer = StreamInitAnswerBuilder::vod();
    answer.timeEventsURL = base + "/document";
    std::ofstream(server_.folder() / "document")
        << StreamInfoBuilder::vod()
               .addBreak("b", 1)
               .addAd("a", 4, VastBuilder::typical("a", base).build())
               .build();
    server_.start("server { listen " + host() +
                      " ssl; ssl_certificate ca.pem; ssl_certificate_key key.pem; root .;"
                      "location /document { } location / { return 200 '" +
                      answer.build() + "'; } }",
                  {&listener_});
  }
  std::string host() const { return "127.0.0.1:" + listener_.port(); }
  std::string caFile() const { return server_.folder() / "ca.pem"; }

 private:
  const test::Listener listener_;
  test::NginxProcess server_;
};

/// Passes requests on, and tells after each result.
class TellingClient final : public HTTPClient {
 public:
  explicit TellingClient(std::shared_ptr<HTTPClient> client) : client_(std::move(client)) {}
  void send(HTTPRequest request, Completion completion) override {
    ++underWay;
    client_->send(std::move(request),
                  [this, completion = std::move(completion)](HTTPResult result) {
                    --underWay;
                    EXPECT_FALSE(result.error) << result.error->description;
                    completion(std::move(result));
                    afterResult();
                  });
  }
  std::size_t underWay = 0;
  std::function<void()> afterResult;

 private:
  const std::shared_ptr<HTTPClient> client_;
};

/// One host: plays its stream as soon as it is loaded.
struct Viewer {
  Viewer() {
    manager->setDelegate(host);
    manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID("s", "v"));
  }
  void playWhatIsLoaded() {
    if (display->loads().empty() || std::exchange(isPlaying, true)) return;
    display->play(0, 6);
  }
  /// How far the session has come: 0 before the answer, 1 before the document, 2 with pings.
  std::size_t stage() const { return host->events().empty() ? 0 : isPlaying ? 2 : 1; }

  const std::shared_ptr<ScriptedDisplay> display = std::make_shared<ScriptedDisplay>();
  const std::shared_ptr<RecordingDelegate> host = std::make_shared<RecordingDelegate>();
  std::shared_ptr<XELStreamManager> manager = XELStreamManager::initWithVideoDisplay(display);
  bool isPlaying = false;
};

/// A round of sessions that are let go of one by one, while others go on, and then the client,
/// while requests are under way.
class Round {
 public:
  Round(const StreamServer& server, std::uint32_t seed) : random_(seed) {
    auto platform = Platform::makeDefault({.services = {server.host(), server.host()},
                                           .caFile = server.caFile(),
                                           .mainRunLoop = loop_});
    http_ = std::make_shared<TellingClient>(std::exchange(platform.http, nullptr));
    http_->afterResult = [this] { letGoOfSome(); };
    platform.http = http_;
    scope_ = std::make_unique<ScopedPlatform>(std::move(platform));
    for (int i = 0; i < 25; ++i) {
      managers_.push_back(viewers_.emplace_back(std::make_unique<Viewer>())->manager);
    }
  }

  void run() {
    loop_->run();
    viewers_.clear();
    givenUp += http_->underWay;
    scope_ = nullptr;
    http_ = nullptr;
    for (const auto& manager : managers_) EXPECT_TRUE(manager.expired());
    loop_->post([this] { loop_->stop(); });
    loop_->run();
    for (const auto& [display, loads] : ended_) EXPECT_EQ(display->loads().size(), loads);
  }

  std::size_t endedIn[3] = {};
  std::size_t givenUp = 0;

 private:
  void letGoOfSome() {
    for (const auto& viewer : viewers_) viewer->playWhatIsLoaded();
    if (!viewers_.empty() && random_() % 3 == 0) {
      const auto at = static_cast<std::ptrdiff_t>(random_() % viewers_.size());
      const auto viewer = std::move(viewers_[static_cast<std::size_t>(at)]);
      viewers_.erase(viewers_.begin() + at);
      ++endedIn[viewer->stage()];
      ended_.emplace_back(viewer->display, viewer->display->loads().size());
    }
    if (viewers_.empty()) loop_->stop();
  }

  std::mt19937 random_;
  const std::shared_ptr<StandardRunLoop> loop_ = std::make_shared<StandardRunLoop>();
  std::shared_ptr<TellingClient> http_;
  std::unique_ptr<ScopedPlatform> scope_;
  std::vector<std::unique_ptr<Viewer>> viewers_;
  std::vector<std::weak_ptr<XELStreamManager>> managers_;
  std::vector<std::pair<std::shared_ptr<ScriptedDisplay>, std::size_t>> ended_;
};

TEST(LettingGoOfManagers, EndsAHundredSessionsAtAnyMoment) {
  const StreamServer server;
  std::size_t endedIn[3] = {};
  std::size_t givenUp = 0;
  for (std::uint32_t seed = 1; seed <= 4; ++seed) {
    Round round(server, seed);
    round.run();
    givenUp += round.givenUp;
    for (std::size_t stage = 0; stage < 3; ++stage) endedIn[stage] += round.endedIn[stage];
  }
  for (const std::size_t count : endedIn) EXPECT_GT(count, 0u);
  EXPECT_GT(givenUp, 0u) << "the client never ended with requests under way";
}

}  // namespace
}  // namespace xel
