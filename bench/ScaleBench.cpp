#include <vector>

#include <benchmark/benchmark.h>

#include "xel/platform/JSONValue.h"

#include "bench/Allocations.h"
#include "bench/Documents.h"
#include "bench/Figures.h"
#include "bench/Session.h"

namespace xel::bench {
namespace {

constexpr int seconds = 60;
constexpr int ticksPerSecond = 5;
constexpr int inAnAd = 5 * ticksPerSecond;

/// Sessions side by side, through a break of three ads and half a minute behind it. One iteration
/// is a minute of stream time.
void sessions(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const std::string document = streamInfoDocument(2);
  const double before = heapBytes();
  auto parsed = JSONValue::parse(document);
  const double bytesOfDocument = heapBytes() - before;
  parsed = {};

  for (auto _ : state) {
    state.PauseTiming();
    {
      World world(document);
      const double empty = heapBytes();
      double heldInAnAd = 0;
      std::vector<VODSession> all;
      all.reserve(count);
      while (all.size() < count) all.emplace_back(world);
      // No two are at the same place of a second.
      state.ResumeTiming();
      for (int tick = 0; tick < seconds * ticksPerSecond; ++tick) {
        for (std::size_t i = 0; i < count; ++i) {
          const double phase = static_cast<double>(i) / static_cast<double>(count);
          all[i].display->reportProgress((tick + phase) / ticksPerSecond);
        }
        world.loop->runUntilIdle();
        if (tick == inAnAd) heldInAnAd = heapBytes();
      }
      state.PauseTiming();
      for (const VODSession& session : all) {
        if (session.host->starts != 3) state.SkipWithError("a session did not start its ads");
      }
      state.counters["bytes"] = (heldInAnAd - empty) / static_cast<double>(count) - bytesOfDocument;
    }
    state.ResumeTiming();
  }
}
BENCHMARK(sessions)->Arg(100)->Arg(1000)->Arg(10'000)->Iterations(1)->Unit(benchmark::kMillisecond);

double timePerSession(const Results& results, const std::string& count) {
  return results.time("sessions/" + count) / std::stod(count);
}

constexpr auto atMost = Figure::Bound::atMost;

const AddFigure figures[] = {
    AddFigure({"10,000 on-demand sessions, each ticking 5 times a second: share of one core", "%",
               atMost, 25,
               [](const Results& r) { return r.time("sessions/10000") / (seconds * 1e9) * 100; }}),
    AddFigure({"memory of one of 10,000 sessions beside its document", "KB", atMost, 40,
               [](const Results& r) { return r.counter("sessions/10000", "bytes") / 1000; }}),
    AddFigure(
        {"cost of one of 10,000 sessions, to one of 1,000", "×", atMost, 1.5,
         [](const Results& r) { return timePerSession(r, "10000") / timePerSession(r, "1000"); }}),
    AddFigure(
        {"the same, to one of 100, which fit into the cache", "×", atMost, 3,
         [](const Results& r) { return timePerSession(r, "10000") / timePerSession(r, "100"); }}),
    AddFigure({"memory of one of 10,000 sessions, to one of 100", "×", atMost, 1.1,
               [](const Results& r) {
                 return r.counter("sessions/10000", "bytes") / r.counter("sessions/100", "bytes");
               }}),
};

}  // namespace
}  // namespace xel::bench
