#include <chrono>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xel/simulation/CannedAdServer.h"

namespace xel::simulation {
namespace {

struct CannedAdServerTest : testing::Test {
  void send(const std::string& url, std::optional<std::string> trackingEvent = {},
            std::optional<std::chrono::milliseconds> timeout = {}) {
    HTTPRequest request;
    request.url = url;
    request.trackingEvent = std::move(trackingEvent);
    request.timeout = timeout;
    server.send(std::move(request), [this](const HTTPResult& result) {
      const std::string what =
          result.error ? "error " + std::to_string(result.error->code)
                       : std::to_string(result.response.status) + " " + result.response.body;
      results.push_back(what + " at " + std::to_string(std::lround(loop->now() * 10)));
    });
  }
  const std::shared_ptr<VirtualRunLoop> loop = std::make_shared<VirtualRunLoop>();
  CannedAdServer server{loop};
  /// Status and body, or error code; and the time in tenths of a second.
  std::vector<std::string> results;
};

TEST_F(CannedAdServerTest, UsesAnswersOneAfterAnotherAndKeepsTheLast) {
  const std::string url = "https://a.example/";
  server.answer(url, {200, "one", 2});
  send(url);
  send(url);
  server.fail(url, TransferError::couldNotConnect);
  server.answer(url, {500, "three", 1});
  for (int i = 0; i < 3; ++i) send(url);
  EXPECT_TRUE(results.empty());
  EXPECT_EQ(server.outstanding(), 5u);
  loop->advance(10);
  EXPECT_EQ(results, (std::vector<std::string>{"error 5 at 0", "500 three at 10", "500 three at 10",
                                               "200 one at 20", "200 one at 20"}));
  EXPECT_EQ(server.outstanding(), 0u);
}

TEST_F(CannedAdServerTest, HoldsToTheRulesOfAClient) {
  server.hang("https://hung.example/");
  server.answer("https://slow.example/", {200, "late", 6});
  send("ftp://refused.example/");
  send("https://unknown.example/document");
  send("https://unknown.example/ping", "start");
  send("https://slow.example/", std::nullopt, std::chrono::seconds(5));
  send("https://hung.example/");
  loop->advance(100);
  EXPECT_EQ(results, (std::vector<std::string>{"error 2 at 0", "404  at 0", "204  at 0",
                                               "error 3 at 50", "error 3 at 600"}));
  EXPECT_EQ(server.requests().size(), 5u);
  ASSERT_EQ(server.pings().size(), 1u);
  EXPECT_EQ(server.pings()[0].request.trackingEvent, "start");
}

TEST_F(CannedAdServerTest, CompletionsAreReleasedOnceRunAndWithTheServer) {
  auto owned = std::make_shared<int>();
  auto other = std::make_unique<CannedAdServer>(loop);
  other->hang("https://hung.example/");
  for (const char* url : {"https://hung.example/", "https://a.example/"}) {
    HTTPRequest request;
    request.url = url;
    other->send(request, [owned](const HTTPResult&) {});
  }
  loop->runUntilIdle();
  EXPECT_EQ(owned.use_count(), 2);
  other.reset();
  EXPECT_EQ(owned.use_count(), 1);
  loop->advance(100);
}

}  // namespace
}  // namespace xel::simulation
