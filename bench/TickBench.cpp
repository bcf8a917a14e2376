#include <benchmark/benchmark.h>

#include "xel/simulation/StreamInfoBuilder.h"

#include "bench/Allocations.h"
#include "bench/Figures.h"
#include "bench/Session.h"

namespace xel::bench {
namespace {

/// A break of one endless ad from second 0 on.
std::string documentOfAnEndlessAd() {
  auto document = simulation::StreamInfoBuilder::vod();
  document.addBreak("break", 0).addAd("ad", 1e9);
  return document.build();
}

/// Progress reports 0.2 s apart.
void tick(benchmark::State& state, bool inAnAd) {
  World world(documentOfAnEndlessAd());
  VODSession session(world);
  if (inAnAd) session.display->reportProgress(0);
  world.loop->runUntilIdle();
  if (session.host->starts != (inAnAd ? 1 : 0)) state.SkipWithError("the ad did not start");

  int ticks = 5;
  const std::size_t before = allocations();
  for (auto _ : state) session.display->reportProgress(++ticks / 5.0);
  state.counters["allocations"] = static_cast<double>(allocations() - before);
  if ((session.host->countdowns > 0) != inAnAd) state.SkipWithError("wrong countdowns");
}

void tickWithoutEvent(benchmark::State& state) { tick(state, false); }
BENCHMARK(tickWithoutEvent);

void tickInAnAd(benchmark::State& state) { tick(state, true); }
BENCHMARK(tickInAnAd);

constexpr auto atMost = Figure::Bound::atMost;

const AddFigure figures[] = {
    AddFigure({"progress tick without an event", "ns", atMost, 200,
               [](const Results& r) { return r.time("tickWithoutEvent"); }}),
    AddFigure({"progress tick in an ad, with the host's countdown", "ns", atMost, 2000,
               [](const Results& r) { return r.time("tickInAnAd"); }}),
    AddFigure({"allocations of all these ticks together", "", atMost, 0,
               [](const Results& r) {
                 return r.counter("tickWithoutEvent", "allocations") +
                        r.counter("tickInAnAd", "allocations");
               }}),
};

}  // namespace
}  // namespace xel::bench
