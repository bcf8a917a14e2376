#include "backends/CurlHTTPClientTest.h"

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"

#include "backends/NginxServer.h"
#include "backends/curl/CurlHTTPClient.h"

namespace xel {
namespace {

using test::CurlHTTPClientTest;
using test::field;
using test::get;
using test::Listener;
using test::NginxServer;

TEST_F(CurlHTTPClientTest, CarriesARequestAsWrittenOverEitherProtocol) {
  for (const auto& [base, protocol] :
       {std::pair(server_.overHTTP1(), "HTTP/1.1 "), std::pair(server_.overHTTP2(), "HTTP/2.0 ")}) {
    HTTPRequest request = get(base + "/a/../echo?x=[MACRO]&y=%61#part");
    request.method = "POST";
    request.headers = {{"User-Agent", "player/1 é|"}, {"X-Empty", ""}};
    request.body = std::string(2000, 'b') + "=1&c=%20";
    const HTTPResponse posted = fetch(request).response;
    EXPECT_EQ(posted.status, 200);
    EXPECT_EQ(posted.body, "fine");
    EXPECT_EQ(field(posted, "x-request"),
              protocol + std::string("POST /a/../echo?x=[MACRO]&y=%61"));
    EXPECT_EQ(field(posted, "x-fields"), "player/1 é||application/x-www-form-urlencoded||");
    EXPECT_EQ(field(posted, "x-body"), request.body);
    request.body.clear();
    for (const std::string method : {"GET", "POST", "HEAD", "PUT"}) {
      request.method = method;
      EXPECT_TRUE(field(fetch(request).response, "X-Request").starts_with(protocol + method + ' '));
    }
  }
}

TEST_F(CurlHTTPClientTest, CompletesHundredsOfRequestsOnceEachOverFewConnections) {
  // And one that is no ping.
  constexpr std::size_t most = 6 + 1;
  for (const std::string& base : {server_.plain(), server_.overHTTP1(), server_.overHTTP2()}) {
    std::vector<HTTPRequest> requests(600, get(base + "/ok"));
    for (std::size_t i = 0; i < requests.size(); i += 2) requests[i].trackingEvent = "start";
    std::set<std::string> connections;
    for (const HTTPResult& result : fetchAll(requests)) {
      ASSERT_FALSE(result.error) << result.error->description;
      EXPECT_EQ(result.response.status, 200);
      connections.insert(field(result.response, "X-Connection"));
    }
    EXPECT_LE(connections.size(), most) << base;
    connections.insert(field(fetch(get(base + "/ok")).response, "X-Connection"));
    EXPECT_LE(connections.size(), most) << "a later request did not reuse a connection";
  }
}

TEST_F(CurlHTTPClientTest, PassesAnyStatusThroughAndFollowsRedirects) {
  for (const int status : {304, 404}) {
    const HTTPResult result = fetch(get(server_.plain() + '/' + std::to_string(status)));
    EXPECT_EQ(result.response.status, status);
  }
  const HTTPResponse redirected = fetch(get(server_.overHTTP2() + "/redirect")).response;
  EXPECT_EQ(redirected.body, "fine");
  EXPECT_EQ(field(redirected, "Location"), "(none)") << "a header of the first answer";
}

TEST_F(CurlHTTPClientTest, DecodesAndCapsDocumentsAndThrowsBodiesOfPingsAway) {
  const HTTPResponse text = fetch(get(server_.overHTTP2() + "/text")).response;
  EXPECT_EQ(field(text, "Content-Encoding"), "gzip");
  EXPECT_EQ(text.body, std::string(10'000, 'a'));
  EXPECT_EQ(failureOf(get(server_.plain() + "/large")), TransferError::tooLarge);
  EXPECT_EQ(failureOf(get(server_.plain() + "/bomb")), TransferError::tooLarge);
  HTTPRequest ping = get(server_.plain() + "/large");
  ping.trackingEvent = "start";
  const HTTPResponse pinged = fetch(ping).response;
  EXPECT_EQ(pinged.status, 200);
  EXPECT_EQ(pinged.body, "");
}

TEST_F(CurlHTTPClientTest, TellsWhyATransferFailed) {
  const std::string closedPort = Listener().url();
  const std::string wrongName = "https://localhost" + server_.overHTTP1().substr(17) + "/ok";
  // A label of more than 63 letters is refused by the resolver itself.
  const std::string unresolvable = "http://" + std::string(64, 'a') + ".invalid/";
  const std::pair<std::string, TransferError> failures[] = {
      {closedPort, TransferError::couldNotConnect},
      {unresolvable, TransferError::couldNotResolve},
      {wrongName, TransferError::tlsFailed},
      {server_.plain() + "/redirect-to-ftp", TransferError::invalidRequest},
      {server_.plain() + "/loop", TransferError::tooManyRedirects},
      {"http://127.0.0.1:99999/", TransferError::invalidRequest},
  };
  for (const auto& [url, error] : failures) EXPECT_EQ(failureOf(get(url)), error) << url;

  const std::pair<std::string_view, TransferError> answers[] = {
      {"SSH-2.0-server\r\n", TransferError::badResponse},
      {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", TransferError::connectionLost},
      {"HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\n\r\nplain", TransferError::badResponse},
  };
  for (const auto& [bytes, error] : answers)
    EXPECT_EQ(fetchAnswer(bytes).error->code, static_cast<int>(error)) << bytes;

  client_ = makeCurlHTTPClient({}, loop_);
  EXPECT_EQ(failureOf(get(server_.overHTTP2() + "/ok")), TransferError::tlsFailed) << "untrusted";
}

std::string repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (; times > 0; --times) all += text;
  return all;
}

TEST_F(CurlHTTPClientTest, EndsAnswersThatHaveNoEnd) {
  const std::string ok = "HTTP/1.1 200 OK\r\n";
  const std::pair<const char*, std::string> answers[] = {
      {"Too large response headers", ok + repeated("X: y\r\n", 1'000'000)},
      {"A header is too long", ok + "X: " + std::string(std::size_t{8} << 20, 'y')},
      {"A header is too long", "HTTP/1.1 200 " + std::string(std::size_t{8} << 20, 'y')},
      {"content encoding", ok + "Content-Encoding: " + repeated("gzip, ", 50) + "gzip\r\n\r\nx"},
      {"hexadecimal", ok + "Transfer-Encoding: chunked\r\n\r\n" + std::string(100, 'f')},
  };
  for (const auto& [reason, bytes] : answers) {
    const HTTPResult result = fetchAnswer(bytes);
    ASSERT_TRUE(result.error) << reason;
    EXPECT_NE(result.error->description.find(reason), std::string::npos)
        << result.error->description;
  }
}

/// Connections that the server closes between two requests are no fault, however many there are.
TEST_F(CurlHTTPClientTest, SendsAgainWhatAClosedConnectionTook) {
  constexpr int requests = 12;
  const Listener listener;
  std::thread server([&] {
    for (int i = 0; i < requests; ++i) {
      const int connection = accept(listener.socket(), nullptr, nullptr);
      char request[4096];
      constexpr std::string_view answer = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
      EXPECT_GT(recv(connection, request, sizeof request, 0), 0);
      EXPECT_GT(::send(connection, answer.data(), answer.size(), MSG_NOSIGNAL), 0);
      static_cast<void>(recv(connection, request, sizeof request, 0));
      close(connection);
    }
  });
  for (int i = 0; i < requests; ++i) EXPECT_EQ(failureOf(get(listener.url())), TransferError{0});
  client_.reset();
  server.join();
}

TEST_F(CurlHTTPClientTest, TimesOutInTransferAndWhileWaitingForOthers) {
  using namespace std::chrono_literals;
  const Listener unanswering;
  HTTPRequest hasty = get(unanswering.url());
  hasty.timeout = 20ms;
  EXPECT_EQ(failureOf(hasty), TransferError::timedOut);

  // Six fill the host's connections, and the others wait.
  const Listener silent;
  const HTTPRequest patient = get(silent.url());
  hasty.url = patient.url;
  for (int i = 0; i < 20; ++i) client_->send(patient, [](const HTTPResult&) { FAIL(); });
  silent.awaitConnections(6);
  const HTTPResult waited = fetch(hasty);
  ASSERT_TRUE(waited.error);
  EXPECT_EQ(waited.error->description,
            "Timed out waiting for earlier requests to http://127.0.0.1:" + silent.port());

  // A body of which something comes at all times, but never the end.
  const Listener dripping;
  std::thread server([&] {
    const int connection = accept(dripping.socket(), nullptr, nullptr);
    std::string_view next = "HTTP/1.1 200 OK\r\n\r\n";
    while (::send(connection, next.data(), next.size(), MSG_NOSIGNAL) > 0) next = "x";
    close(connection);
  });
  HTTPRequest ping = get(dripping.url());
  ping.trackingEvent = "start";
  ping.timeout = 300ms;
  EXPECT_EQ(failureOf(ping), TransferError::timedOut);
  server.join();

  hasty.timeout = std::chrono::milliseconds::min();
  EXPECT_EQ(failureOf(hasty), TransferError::timedOut);
  HTTPRequest unhurried = get(server_.plain() + "/ok");
  unhurried.timeout = std::chrono::milliseconds::max();
  EXPECT_FALSE(fetch(unhurried).error);
}

TEST_F(CurlHTTPClientTest, FetchesDocumentsWhileAllPingsHang) {
  HTTPRequest ping = get(server_.overHTTP1() + "/never");
  ping.trackingEvent = "start";
  for (int i = 0; i < 20; ++i) client_->send(ping, [](const HTTPResult&) { FAIL(); });
  EXPECT_FALSE(fetch(get(server_.plain() + "/ok")).error) << "the pings are under way now";
  HTTPRequest document = get(server_.overHTTP1() + "/ok");
  document.timeout = std::chrono::seconds(2);
  for (const HTTPResult& result : fetchAll(std::vector(10, document))) EXPECT_FALSE(result.error);
}

TEST_F(CurlHTTPClientTest, RefusesWhatMustNotBeSent) {
  const Listener listener;
  std::vector<HTTPRequest> refused(4, get(listener.url()));
  refused[0].url += "a\r\nX-Injected: 1";
  refused[1].url = "file:///etc/hostname";
  refused[2].headers = {{"X-Title", "one\r\nX-Injected: 1"}};
  refused[3].method = "GET / HTTP/1.1\r\nX-Injected: 1\r\n\r\nGET";
  for (const HTTPRequest& bad : refused) {
    EXPECT_EQ(failureOf(bad), TransferError::invalidRequest) << bad.url;
  }
  EXPECT_FALSE(listener.hasBeenReached());
}

/// A completion that tells how often it ran, and on which thread it was released.
struct Witness {
  Witness() = default;
  explicit Witness(std::function<void()> action) : onRun(std::move(action)) {}
  HTTPClient::Completion completion() {
    const auto released = [this](void*) { releasedOn.push_back(std::this_thread::get_id()); };
    return [this, owned = std::shared_ptr<void>(nullptr, released)](const HTTPResult&) {
      ++runs;
      if (onRun) onRun();
    };
  }
  int runs = 0;
  std::vector<std::thread::id> releasedOn;
  std::function<void()> onRun;
};

TEST_F(CurlHTTPClientTest, ReleasesCompletionsOnTheMainThreadWhenItEnds) {
  const Listener silent;
  Witness witness;
  // Handshakes, transfers and waiting requests under way, and results that nobody has taken yet.
  const std::string silentTLS = "https://127.0.0.1:" + silent.port();
  for (const std::string& url :
       {silent.url(), silentTLS, server_.overHTTP2() + "/ok", std::string("http://not valid")}) {
    for (int i = 0; i < 20; ++i) client_->send(get(url), witness.completion());
  }
  client_.reset();
  EXPECT_EQ(witness.releasedOn, std::vector(80, std::this_thread::get_id()));
  drain();
  EXPECT_EQ(witness.runs, 0);
}

TEST_F(CurlHTTPClientTest, MayBeDestroyedByACompletion) {
  Witness witness([this] {
    client_.reset();
    loop_->stop();
  });
  for (int i = 0; i < 50; ++i) client_->send(get(server_.plain() + "/ok"), witness.completion());
  loop_->run();
  drain();
  EXPECT_EQ(witness.runs, 1);
  EXPECT_EQ(witness.releasedOn, std::vector(50, std::this_thread::get_id()));
}

/// Made before any client and so destroyed after all have ended, when it sends once more.
struct SendsAtExit {
  ~SendsAtExit() {
    if (!client) return;
    client->send(get("http://127.0.0.1/"), [](const HTTPResult& result) {
      _exit(result.error ? static_cast<int>(result.error->code) : 0);
    });
    loop->run();
  }
  std::shared_ptr<StandardRunLoop> loop;
  std::shared_ptr<HTTPClient> client;
} sendsAtExit;

TEST(CurlHTTPClientDeathTest, CancelsWhatIsSentAfterItsEnd) {
  const auto sendAtExit = [] {
    sendsAtExit.loop = std::make_shared<StandardRunLoop>();
    sendsAtExit.client = makeCurlHTTPClient({}, sendsAtExit.loop);
    std::exit(0);
  };
  EXPECT_EXIT(sendAtExit(), testing::ExitedWithCode(static_cast<int>(TransferError::cancelled)),
              "^$");
}

}  // namespace
}  // namespace xel
