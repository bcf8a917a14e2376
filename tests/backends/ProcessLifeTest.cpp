#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <semaphore>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"

#include "backends/CurlHTTPClientTest.h"
#include "backends/NginxServer.h"

namespace xel {
namespace {

using test::field;
using test::get;
using test::NginxServer;

constexpr std::string_view stalledHost = "stalled.example";
/// How long what should not happen at all is waited for, so that a fault shows as one.
constexpr auto patience = std::chrono::seconds(20);

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int exits = 40;
/// ThreadSanitizer lets no thread start in the child of a process that has several; the leak
/// checker takes what their threads had for lost; both have a resolver of their own; and the leak
/// checker needs a thread.
constexpr bool isPlainBuild = false;
#else
constexpr int exits = 300;
constexpr bool isPlainBuild = true;
#endif

/// A resolver that takes up a look-up of `stalledHost` and has no answer until it is told to.
struct StalledResolver {
  std::binary_semaphore asked{0};
  std::binary_semaphore released{0};
  std::binary_semaphore answered{0};
};
StalledResolver& stalledResolver() {
  static StalledResolver& resolver = *new StalledResolver;
  return resolver;
}

/// How a child ended that did this and then exited: 0 if it did so without a complaint.
int statusOfChild(const std::function<void()>& action) {
  const pid_t child = fork();
  if (child == 0) {
    action();
    std::exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

/// Sends requests that need handshakes, and transfers that take long; returns after so many
/// answers.
void beginTransfers(int answers) {
  const NginxServer& server = NginxServer::instance();
  // The bundle is made before TLS is initialised, and so destroyed after TLS is.
  static_cast<void>(Platform::current());
  const auto loop = std::make_shared<StandardRunLoop>();
  Platform::install(Platform::makeDefault({.caFile = server.caFile(), .mainRunLoop = loop}));
  const auto countDown = [loop, &answers](const HTTPResult&) {
    if (--answers == 0) loop->stop();
  };
  for (int i = 0; i < 8; ++i) {
    for (const std::string& base : {server.overHTTP1(), server.overHTTP2()}) {
      Platform::current().http->send(get(base + (i == 7 ? "/large" : "/ok")), countDown);
    }
  }
  if (answers > 0) loop->run();
}

TEST(ProcessLife, ExitsCleanlyWithHandshakesAndTransfersUnderWay) {
  static_cast<void>(NginxServer::instance());
  for (int time = 0; time < exits; ++time) {
    ASSERT_EQ(statusOfChild([time] { beginTransfers(time % 14); }), 0) << time;
  }
}

using ForkTest = test::CurlHTTPClientTest;

TEST_F(ForkTest, LeavesTheChildAClientOfItsOwnAndTheParentItsConnections) {
  if (!isPlainBuild) GTEST_SKIP() << "only without sanitizers";
  const auto connection = [this] {
    return field(fetch(get(server_.overHTTP2() + "/ok")).response, "X-Connection");
  };
  const std::string before = connection();
  const auto useAnother = [&] {
    client_ = makeCurlHTTPClient({.caFile = server_.caFile()}, loop_);
    EXPECT_NE(connection(), before);
  };
  EXPECT_EQ(statusOfChild([this] { client_.reset(); }), 0);
  EXPECT_EQ(statusOfChild([] {}), 0) << "exit with the inherited client";
  EXPECT_EQ(statusOfChild(useAnother), 0);
  EXPECT_EQ(connection(), before) << "a child has closed the parent's connection";
}

using StalledLookUpTest = test::CurlHTTPClientTest;

TEST_F(StalledLookUpTest, HoldsUpNeitherTheClientsEndNorTheProcesss) {
  if (!isPlainBuild) GTEST_SKIP() << "only without sanitizers";
  StalledResolver& resolver = stalledResolver();
  const auto begin = [&] {
    client_->send(get("http://" + std::string(stalledHost)), [](const HTTPResult&) { FAIL(); });
    ASSERT_TRUE(resolver.asked.try_acquire_for(patience)) << "another resolver was asked";
  };
  const auto exitMeanwhile = [&] {
    client_ = makeCurlHTTPClient({}, loop_);
    begin();
  };
  EXPECT_EQ(statusOfChild(exitMeanwhile), 0);
  begin();
  client_.reset();
  EXPECT_FALSE(resolver.answered.try_acquire()) << "it waited for the look-up";
  resolver.released.release();
  resolver.answered.acquire();
  drain();
}

TEST(ProcessLife, FailsRequestsWhereNoThreadOrFileCanBeHad) {
  if (!isPlainBuild) GTEST_SKIP() << "only without sanitizers";
  const auto fail = [](auto limit) {
    // The limit of threads is not for root.
    const bool isUnprivileged = geteuid() != 0 || setresuid(65534, 65534, 65534) == 0;
    const rlimit none = {0, 0};
    EXPECT_TRUE(isUnprivileged && setrlimit(limit, &none) == 0);
    const auto loop = std::make_shared<StandardRunLoop>();
    const auto platform = Platform::makeDefault({.mainRunLoop = loop});
    std::string told;
    platform.http->send(get("http://127.0.0.1/"), [&](const HTTPResult& result) {
      told = result.error ? result.error->description : "an answer";
      loop->stop();
    });
    loop->run();
    EXPECT_TRUE(told.starts_with("The client could not start: ")) << told;
  };
  EXPECT_EQ(statusOfChild([&] { fail(RLIMIT_NPROC); }), 0);
  EXPECT_EQ(statusOfChild([&] { fail(RLIMIT_NOFILE); }), 0);
}

}  // namespace
}  // namespace xel

// In the place of the C library's, for libcurl too.
extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char* name,
                                                                  const char* service,
                                                                  const addrinfo* hints,
                                                                  addrinfo** result) {
  using Resolve = decltype(&getaddrinfo);
  static const auto resolve = reinterpret_cast<Resolve>(dlsym(RTLD_NEXT, "getaddrinfo"));
  if (name == nullptr || name != xel::stalledHost) return resolve(name, service, hints, result);
  xel::StalledResolver& resolver = xel::stalledResolver();
  resolver.asked.release();
  static_cast<void>(resolver.released.try_acquire_for(xel::patience));
  resolver.answered.release();
  return EAI_FAIL;
}
