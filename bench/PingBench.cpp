#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include "xel/platform/StandardRunLoop.h"

#include "backends/curl/CurlHTTPClient.h"
#include "bench/Ratios.h"
#include "backends/NginxServer.h"

namespace xel::bench {
namespace {

constexpr int pings = 4000;

/// A URL that is answered after 1 ms, which is soon for an ad server. What is compared is how well
/// the waits overlap: without any wait both ways are bound by the processor.
const std::string& pingURL() {
  static const std::string url = test::NginxServer::instance().overHTTP2() + "/unhurried";
  return url;
}

/// One iteration is one ping of a burst.
void PingsOverTheClient(benchmark::State& state) {
  HTTPRequest ping;
  ping.url = pingURL();
  ping.trackingEvent = "start";
  const auto loop = std::make_shared<StandardRunLoop>();
  const auto client = makeCurlHTTPClient({.caFile = test::NginxServer::instance().caFile()}, loop);
  while (state.KeepRunningBatch(pings)) {
    int completed = 0;
    int failed = 0;
    for (int i = 0; i < pings; ++i) {
      client->send(ping, [&](const HTTPResult& result) {
        if (result.error || result.response.status != 200) ++failed;
        if (++completed == pings) loop->stop();
      });
    }
    loop->run();
    if (failed > 0) state.SkipWithError("a ping failed");
  }
}
BENCHMARK(PingsOverTheClient)->Iterations(pings)->Unit(benchmark::kMicrosecond)->UseRealTime();

std::size_t discard(char*, std::size_t size, std::size_t count, void*) { return size * count; }

/// One handle for all, so that the connection is kept.
void PingsInABlockingLoop(benchmark::State& state) {
  const std::string caFile = test::NginxServer::instance().caFile();
  CURL* easy = curl_easy_init();
  curl_easy_setopt(easy, CURLOPT_URL, pingURL().c_str());
  curl_easy_setopt(easy, CURLOPT_CAINFO, caFile.c_str());
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &discard);
  for (auto _ : state) {
    if (curl_easy_perform(easy) != CURLE_OK) state.SkipWithError("a ping failed");
  }
  curl_easy_cleanup(easy);
}
BENCHMARK(PingsInABlockingLoop)->Iterations(500)->Unit(benchmark::kMicrosecond)->UseRealTime();

const AddRatio ratio({"4,000 pings answered after 1 ms, against a blocking loop",
                      "PingsOverTheClient", "PingsInABlockingLoop", Ratio::Bound::atLeast, 3});

}  // namespace
}  // namespace xel::bench
