#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "xel/platform/StandardRunLoop.h"

#include "backends/NginxServer.h"
#include "backends/curl/CurlHTTPClient.h"

namespace xel::test {

inline std::string field(const HTTPResponse& response, std::string_view name) {
  HTTPRequest fields;
  fields.headers = response.headers;
  return std::string(fields.header(name).value_or("(none)"));
}

inline HTTPRequest get(std::string url) {
  HTTPRequest request;
  request.url = std::move(url);
  return request;
}

/// A client that trusts the nginx of this process, and what it makes of answers.
class CurlHTTPClientTest : public testing::Test {
 protected:
  void SetUp() override {
    setenv("no_proxy", "*", 1);
    client_ = makeCurlHTTPClient({.caFile = server_.caFile()}, loop_);
  }

  std::vector<HTTPResult> fetchAll(const std::vector<HTTPRequest>& requests) {
    std::vector<std::optional<HTTPResult>> results(requests.size());
    std::size_t missing = requests.size();
    for (std::size_t i = 0; i < requests.size(); ++i) {
      client_->send(requests[i], [&, i](HTTPResult result) {
        EXPECT_TRUE(loop_->isMain());
        EXPECT_FALSE(results[i]) << "completed twice";
        results[i] = std::move(result);
        if (--missing == 0) loop_->stop();
      });
    }
    EXPECT_EQ(missing, requests.size()) << "completed before send returned";
    loop_->run();
    drain();
    std::vector<HTTPResult> all;
    for (auto& result : results) all.push_back(*std::move(result));
    return all;
  }

  HTTPResult fetch(HTTPRequest request) { return std::move(fetchAll({std::move(request)})[0]); }

  /// The code of the failure, 0 if there is none.
  TransferError failureOf(HTTPRequest request) {
    const HTTPResult result = fetch(std::move(request));
    return static_cast<TransferError>(result.error ? result.error->code : 0);
  }

  /// What the client makes of a server that answers with these bytes and closes.
  HTTPResult fetchAnswer(std::string_view bytes) {
    const Listener listener;
    std::thread server([&] {
      const int connection = accept(listener.socket(), nullptr, nullptr);
      char request[4096];
      EXPECT_GT(recv(connection, request, sizeof request, 0), 0);
      EXPECT_GT(::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL), 0);
      close(connection);
    });
    HTTPResult result = fetch(get(listener.url()));
    server.join();
    return result;
  }

  /// Runs everything that has been posted so far.
  void drain() {
    loop_->post([this] { loop_->stop(); });
    loop_->run();
  }

  const NginxServer& server_ = NginxServer::instance();
  const std::shared_ptr<StandardRunLoop> loop_ = std::make_shared<StandardRunLoop>();
  std::shared_ptr<HTTPClient> client_;
};

}  // namespace xel::test
