#include <algorithm>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"

#include "backends/NginxServer.h"
#include "backends/curl/CurlHTTPClient.h"
#include "bench/Figures.h"
#include "tracking/XELTrackingPingHandler.h"

namespace xel::bench {
namespace {

constexpr int burst = 4000;

/// A server that answers at once, or after 1 ms, which is soon for an ad server. At once, all ways
/// are bound by the processor, which client and server share; after a wait, by how well the waits
/// overlap.
enum Server : std::int64_t { atOnceOverHTTP2, after1msOverHTTP2, atOnceOverHTTP1 };

std::string urlOf(const benchmark::State& state) {
  const test::NginxServer& server = test::NginxServer::instance();
  if (state.range(0) == atOnceOverHTTP1) return server.overHTTP1() + "/ok";
  return server.overHTTP2() + (state.range(0) == atOnceOverHTTP2 ? "/ok" : "/unhurried");
}

std::string caFile() { return test::NginxServer::instance().caFile(); }

void pingsOverTheClient(benchmark::State& state) {
  HTTPRequest ping;
  ping.url = urlOf(state);
  ping.trackingEvent = "start";
  const auto loop = std::make_shared<StandardRunLoop>();
  const auto client = makeCurlHTTPClient({.caFile = caFile()}, loop);
  while (state.KeepRunningBatch(burst)) {
    int completed = 0;
    int failed = 0;
    for (int i = 0; i < burst; ++i) {
      client->send(ping, [&](const HTTPResult& result) {
        if (result.error || result.response.status != 200) ++failed;
        if (++completed == burst) loop->stop();
      });
    }
    loop->run();
    if (failed > 0) state.SkipWithError("a ping failed");
  }
}
BENCHMARK(pingsOverTheClient)
    ->DenseRange(atOnceOverHTTP2, atOnceOverHTTP1)
    ->Iterations(burst)
    ->UseRealTime();

std::size_t discard(char*, std::size_t size, std::size_t count, void*) { return size * count; }

CURL* pingHandle(const std::string& url, const std::string& authorities) {
  CURL* easy = curl_easy_init();
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy, CURLOPT_CAINFO, authorities.c_str());
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &discard);
  return easy;
}

/// One handle for all, so that the connection is kept.
void pingsInABlockingLoop(benchmark::State& state) {
  CURL* const easy = pingHandle(urlOf(state), caFile());
  for (auto _ : state) {
    if (curl_easy_perform(easy) != CURLE_OK) state.SkipWithError("a ping failed");
  }
  curl_easy_cleanup(easy);
}
BENCHMARK(pingsInABlockingLoop)
    ->DenseRange(atOnceOverHTTP2, atOnceOverHTTP1)
    ->Iterations(500)
    ->UseRealTime();

/// The least that libcurl needs: as many handles as requests that are under way at once, used again
/// and again on this thread, and nothing else.
void pingsOverABareMultiHandle(benchmark::State& state) {
  constexpr int underWay = 64;
  CURLM* const multi = curl_multi_init();
  std::vector<CURL*> handles;
  while (handles.size() < underWay) handles.push_back(pingHandle(urlOf(state), caFile()));
  while (state.KeepRunningBatch(burst)) {
    int started = 0;
    int completed = 0;
    // The others follow the first over its connection.
    curl_multi_add_handle(multi, handles[static_cast<std::size_t>(started++)]);
    while (completed < burst) {
      int running = 0;
      int left = 0;
      curl_multi_perform(multi, &running);
      while (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
        CURL* const ended = message->easy_handle;
        if (message->data.result != CURLE_OK) state.SkipWithError("a ping failed");
        curl_multi_remove_handle(multi, ended);
        while (completed == 0 && started < underWay) {
          curl_multi_add_handle(multi, handles[static_cast<std::size_t>(started++)]);
        }
        ++completed;
        if (started < burst) {
          ++started;
          curl_multi_add_handle(multi, ended);
        }
      }
      if (completed < burst) curl_multi_poll(multi, nullptr, 0, 1000, nullptr);
    }
  }
  for (CURL* handle : handles) curl_easy_cleanup(handle);
  curl_multi_cleanup(multi);
}
BENCHMARK(pingsOverABareMultiHandle)
    ->DenseRange(atOnceOverHTTP2, atOnceOverHTTP1)
    ->Iterations(burst)
    ->UseRealTime();

/// A load generator, which only counts answers; over as many connections as the client has.
void pingsOfH2load(benchmark::State& state) {
  const std::string command = std::string("h2load ") +
                              (state.range(0) == atOnceOverHTTP1 ? "--h1 -c 6" : "-c 1 -m 64") +
                              " -n " + std::to_string(burst) + ' ' + urlOf(state);
  for (auto _ : state) {
    double perSecond = 0;
    std::FILE* const output = popen(command.c_str(), "r");
    char line[512];
    while (output && std::fgets(line, sizeof line, output)) {
      std::sscanf(line, "finished in %*[^,], %lf req/s", &perSecond);
    }
    if (output) pclose(output);
    if (perSecond == 0) state.SkipWithError("h2load could not be run");
    state.SetIterationTime(1 / perSecond);
  }
}
BENCHMARK(pingsOfH2load)
    ->Arg(atOnceOverHTTP2)
    ->Arg(atOnceOverHTTP1)
    ->Iterations(1)
    ->UseManualTime();

double threadMicroseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// What an event with 50 tracking URLs costs the main thread, a fifth of them measurement URLs.
void sendingFiftyPings(benchmark::State& state) {
  const auto loop = std::make_shared<StandardRunLoop>();
  const ScopedPlatform installed(Platform::makeDefault({.caFile = caFile(), .mainRunLoop = loop}));
  const auto ad = XELAd::initPrivate();
  for (int i = 0; i < 50; ++i) {
    const std::string measured = "/ok/pcs/view?from=adservices.example&xai=1&sig=2&i=";
    ad->addEvent_trackingURL("start", test::NginxServer::instance().overHTTP2() +
                                          (i % 5 == 0 ? measured : "/ok?event=start&cb=[CB]&i=") +
                                          std::to_string(i));
  }
  // Of all repetitions together.
  static std::vector<double> costs;
  for (auto _ : state) {
    const double before = threadMicroseconds();
    XELTrackingPingHandler::pingEvent_forAd("start", ad);
    costs.push_back(threadMicroseconds() - before);
    // The next event comes when these have been answered.
    state.PauseTiming();
    Platform::current().http->send({.url = test::NginxServer::instance().overHTTP2() + "/ok"},
                                   [&](const HTTPResult&) { loop->stop(); });
    loop->run();
    state.ResumeTiming();
  }
  const auto percentile = costs.begin() + static_cast<std::ptrdiff_t>(costs.size() * 99 / 100);
  std::nth_element(costs.begin(), percentile, costs.end());
  state.counters["p99"] = *percentile;
}
BENCHMARK(sendingFiftyPings)->Iterations(500);

/// How many times as fast the client is.
double speedup(const Results& results, const std::string& peer, Server server) {
  const std::string argument = '/' + std::to_string(server);
  return results.time(peer + argument) / results.time("pingsOverTheClient" + argument);
}

constexpr auto atMost = Figure::Bound::atMost;
constexpr auto atLeast = Figure::Bound::atLeast;

const AddFigure figures[] = {
    AddFigure(
        {"4,000 pings answered after 1 ms, to a blocking loop", "×", atLeast, 3.5,
         [](const Results& r) { return speedup(r, "pingsInABlockingLoop", after1msOverHTTP2); }}),
    AddFigure(
        {"4,000 pings answered at once, the same", "×", atLeast, 3.5,
         [](const Results& r) { return speedup(r, "pingsInABlockingLoop", atOnceOverHTTP2); }}),
    AddFigure({"4,000 pings answered at once, to the best that libcurl does on one thread", "×",
               atLeast, 0.6,
               [](const Results& r) {
                 return speedup(r, "pingsOverABareMultiHandle", atOnceOverHTTP2);
               }}),
    AddFigure({"4,000 pings answered at once over HTTP/1.1, to h2load", "×", atLeast, 0.4,
               [](const Results& r) { return speedup(r, "pingsOfH2load", atOnceOverHTTP1); }}),
    AddFigure({"4,000 pings answered at once over HTTP/2, to h2load", "×", atLeast, 0.4,
               [](const Results& r) { return speedup(r, "pingsOfH2load", atOnceOverHTTP2); }}),
    AddFigure({"50 pings of one event, cost to the main thread, 99th percentile", "µs", atMost, 200,
               [](const Results& r) { return r.counter("sendingFiftyPings", "p99"); }}),
};

}  // namespace
}  // namespace xel::bench
