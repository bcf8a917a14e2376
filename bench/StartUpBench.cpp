#include <memory>
#include <string>

#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include "xel/platform/Platform.h"
#include "xel/platform/StandardRunLoop.h"
#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/ScriptedDisplay.h"

#include "backends/NginxServer.h"
#include "bench/Figures.h"

namespace xel::bench {
namespace {

const test::NginxServer& server() { return test::NginxServer::instance(); }

std::string hostAndPort() { return server().overHTTP2().substr(std::string("https://").size()); }

class StoppingDisplay final : public XELVideoDisplay {
 public:
  explicit StoppingDisplay(StandardRunLoop& loop) : loop_(loop) {}
  void loadURL_withSubtitles(const std::string&, const std::vector<JSONValue>&) override {
    loaded = true;
    loop_.stop();
  }
  std::shared_ptr<XELVideoDisplayDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) override {
    delegate_ = std::move(delegate);
  }

  bool loaded = false;

 private:
  StandardRunLoop& loop_;
  std::weak_ptr<XELVideoDisplayDelegate> delegate_;
};

/// From a stream request to the load of the stream, over a new client and a new connection.
void startUp(benchmark::State& state) {
  for (auto _ : state) {
    const auto loop = std::make_shared<StandardRunLoop>();
    DefaultPlatformOptions options{.caFile = server().caFile(), .mainRunLoop = loop};
    options.services.vodHost = hostAndPort();
    const ScopedPlatform installed(Platform::makeDefault(options));
    const auto display = std::make_shared<StoppingDisplay>(*loop);
    const auto manager = XELStreamManager::initWithVideoDisplay(display);
    manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID("bench", "1"));
    loop->run();
    if (!display->loaded) state.SkipWithError("the stream was not loaded");
  }
}
BENCHMARK(startUp)->Iterations(100)->UseRealTime();

std::size_t discard(char*, std::size_t size, std::size_t count, void*) { return size * count; }

/// The two transfers alone.
void bareTransfers(benchmark::State& state) {
  const std::string authorities = server().caFile();
  const std::string base = "https://" + hostAndPort();
  for (auto _ : state) {
    CURL* const easy = curl_easy_init();
    curl_easy_setopt(easy, CURLOPT_CAINFO, authorities.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &discard);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, "a=b");
    curl_easy_setopt(easy, CURLOPT_URL,
                     (base + "/ondemand/hls/content/bench/vid/1/streams").c_str());
    const bool answered = curl_easy_perform(easy) == CURLE_OK;
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy, CURLOPT_URL, (base + "/document").c_str());
    if (!answered || curl_easy_perform(easy) != CURLE_OK) state.SkipWithError("no answer");
    curl_easy_cleanup(easy);
  }
}
BENCHMARK(bareTransfers)->Iterations(100)->UseRealTime();

const AddFigure figure({"from stream request to load, beyond the two transfers", "ms",
                        Figure::Bound::atMost, 2, [](const Results& r) {
                          return (r.time("startUp") - r.time("bareTransfers")) / 1e6;
                        }});

}  // namespace
}  // namespace xel::bench
