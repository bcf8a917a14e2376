#include <memory>

#include <benchmark/benchmark.h>

#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/simulation.h"

#include "bench/Ratios.h"

namespace {

using namespace xel::simulation;

class Host final : public XELStreamManagerDelegate {
 public:
  void streamManager_didInitializeStream(XELStreamManager&, const std::string&) override {}
  void streamManager_didReceiveError(XELStreamManager&,
                                     const std::shared_ptr<const xel::Error>&) override {}
};

/// Progress reports 0.2 s apart through a stretch of an on-demand stream without ads.
void tickWithoutEvent(benchmark::State& state) {
  SimulatedPlatform platform;
  const auto answer = StreamInitAnswerBuilder::vod();
  auto document = StreamInfoBuilder::vod();
  document.addBreak("break", 0).addAd("ad", 10);
  platform.server().answer(platform.vodInitURL("c", "v"), {200, answer.build()});
  platform.server().answer(*answer.timeEventsURL, {200, document.build()});
  const auto display = std::make_shared<ScriptedDisplay>();
  const auto host = std::make_shared<Host>();
  const auto manager = XELStreamManager::initWithVideoDisplay(display);
  manager->setDelegate(host);
  manager->requestStream(XELVODStreamRequest::initWithContentSourceID_videoID("c", "v"));
  platform.loop().runUntilIdle();
  if (display->loads().size() != 1) state.SkipWithError("the stream was not loaded");
  display->reportReady();

  int tick = 100;
  for (auto _ : state) display->reportProgress(++tick / 5.0);
}
BENCHMARK(tickWithoutEvent);

const xel::bench::AddRatio bound({"progress tick without an event", "tickWithoutEvent", "",
                                  xel::bench::Ratio::Bound::atMost, 1000});

}  // namespace
