#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"
#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/simulation.h"

#include "serve/AdServer.h"

namespace xel::serve {
namespace {

/// Passes requests on, and stops the run loop after each answer.
class CountingClient final : public HTTPClient {
 public:
  CountingClient(std::shared_ptr<HTTPClient> inner, std::shared_ptr<StandardRunLoop> loop)
      : inner_(std::move(inner)), loop_(std::move(loop)) {}
  void send(HTTPRequest request, Completion completion) override {
    ++underWay;
    inner_->send(std::move(request), [this, completion = std::move(completion)](HTTPResult result) {
      completion(std::move(result));
      --underWay;
      loop_->stop();
    });
  }
  int underWay = 0;

 private:
  const std::shared_ptr<HTTPClient> inner_;
  const std::shared_ptr<StandardRunLoop> loop_;
};

/// The server, and the library with its own client on loopback.
struct Loopback {
  Loopback() {
    DefaultPlatformOptions options;
    options.services.vodHost = server->url().substr(std::string("https://").size());
    options.host.applicationIdentifier = "com.example.test";
    options.caFile = server->caFile();
    options.mainRunLoop = loop;
    auto platform = Platform::makeDefault(options);
    platform.http = client = std::make_shared<CountingClient>(platform.http, loop);
    platform.log = std::make_shared<simulation::RecordingLog>();
    scope = std::make_unique<ScopedPlatform>(std::move(platform));
  }

  /// Sends a request, and calls back into `answer`, which must live long enough.
  void send(HTTPRequest request, std::optional<HTTPResult>& answer) {
    request.url = server->url() + request.url;
    client->send(std::move(request), [&answer](HTTPResult result) { answer = std::move(result); });
  }
  HTTPResult answerTo(HTTPRequest request) {
    std::optional<HTTPResult> answer;
    send(std::move(request), answer);
    while (!answer) loop->run();
    return *answer;
  }
  int putFaults(const std::string& faults) {
    return answerTo({.url = "/faults", .method = "PUT", .body = faults}).response.status;
  }
  /// Opens an on-demand stream, and plays the seconds from 0 to `end`.
  void play(double end) {
    const auto display = std::make_shared<simulation::ScriptedDisplay>();
    const auto manager = XELStreamManager::initWithVideoDisplay(display);
    manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID("c", "v"));
    while (client->underWay > 0) loop->run();
    display->play(0, end);
    while (client->underWay > 0) loop->run();
  }

  const std::shared_ptr<StandardRunLoop> loop = std::make_shared<StandardRunLoop>();
  std::unique_ptr<AdServer> server = std::make_unique<AdServer>(AdServer::Settings());
  std::shared_ptr<CountingClient> client;
  std::unique_ptr<ScopedPlatform> scope;
};

TEST(AdServer, AnswersAsTheFaultsSay) {
  const struct {
    const char* fault;
    /// 0: there is an error.
    int status;
    TransferError error = {};
  } cases[] = {
      {"reset", 0, TransferError::connectionLost},
      {"truncate", 0, TransferError::connectionLost},
      {"oversized", 0, TransferError::tooLarge},
      {"redirect-loop", 0, TransferError::tooManyRedirects},
      {"redirect-loop@1", 204},
      {"hang", 0, TransferError::timedOut},
      {"slow-drip:1", 0, TransferError::timedOut},
      {"slow-drip:1000", 200},
      {"delay:0.01", 204},
      {"status:503", 503},
      {"malformed", 200},
      {"wrong-type", 200},
      {"oversized:2000000", 200},
  };
  Loopback loopback;
  for (const auto& each : cases) {
    SCOPED_TRACE(each.fault);
    EXPECT_EQ(loopback.putFaults(R"(["ping=)" + std::string(each.fault) + R"("])"), 200);
    HTTPRequest request{.url = "/track/1/x"};
    if (each.error == TransferError::timedOut) request.timeout = std::chrono::milliseconds(100);
    const auto answer = loopback.answerTo(std::move(request));
    EXPECT_EQ(answer.error ? answer.error->code : 0, static_cast<int>(each.error));
    EXPECT_EQ(answer.error ? 0 : answer.response.status, each.status);
  }
  EXPECT_EQ(loopback.putFaults(R"(["ping=x"])"), 400);
  const auto ledger = loopback.answerTo({.url = "/ledger"}).response.body;
  for (const char* entry :
       {R"("status":null,"fault":"ping=reset")", R"("status":503,"fault":"ping=status:503")"}) {
    EXPECT_NE(ledger.find(entry), std::string::npos) << entry;
  }
}

TEST(AdServer, HoldsThePingsAgainstTheDocuments) {
  const struct {
    const char* faults;
    double playedUntil;
    Expectation expectation;
    std::size_t differences;
    const char* first;
  } cases[] = {
      {R"(["ping=reset@3", "ping=redirect-loop@9", "document=delay:0.01"])", 120,
       Expectation::complete, 0, ""},
      {R"(["ping=status:500"])", 17.8, Expectation::started, 0, ""},
      {"[]", 17.8, Expectation::complete, 36,
       "session 1: ad break-1-ad-2, start: expected 1, received 0 (missing): "
       "/track/1/break-1-ad-2/impression"},
      {R"(["document=malformed"])", 120, Expectation::complete, 1,
       "session 1: no stream info document has reached the player"},
      {R"(["init=wrong-type"])", 0, Expectation::complete, 1, "no session was opened"},
      {R"(["init=truncate"])", 0, Expectation::complete, 1, "no session was opened"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.faults);
    Loopback loopback;
    loopback.putFaults(each.faults);
    loopback.play(each.playedUntil);
    const auto differences = loopback.server->checkPings(each.expectation).differences;
    EXPECT_EQ(differences.size(), each.differences) << testing::PrintToString(differences);
    EXPECT_EQ(differences.empty() ? "" : differences[0], each.first);
  }
}

TEST(AdServer, StopsWhileItHoldsAnswersBack) {
  Loopback loopback;
  loopback.putFaults(R"(["ping=hang", "segment=hang"])");
  std::optional<HTTPResult> answer;
  loopback.send({.url = "/track/1/x"}, answer);
  while (loopback.answerTo({.url = "/faults"}).response.body.find(R"("struck":1)") ==
         std::string::npos) {
  }
  EXPECT_FALSE(answer);
  loopback.server.reset();
  while (!answer) loopback.loop->run();
  EXPECT_TRUE(answer->error);
}

}  // namespace
}  // namespace xel::serve
