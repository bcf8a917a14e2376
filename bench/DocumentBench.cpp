#include <string>

#include <benchmark/benchmark.h>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "xel/platform/JSONValue.h"
#include "xel/simulation/StreamInfoBuilder.h"

#include "bench/Ratios.h"
#include "model/XELStreamInfo.h"

namespace {

/// An on-demand document of about 2 MB.
const std::string& streamInfoDocument() {
  static const std::string document = [] {
    auto builder = xel::simulation::StreamInfoBuilder::vod();
    for (int i = 0; i < 330; ++i) {
      const std::string key = std::to_string(i);
      builder.addBreak("break-" + key, i * 100.0);
      for (const char* ad : {"-a", "-b", "-c"}) builder.addAd("ad-" + key + ad, 10.5);
    }
    return builder.build();
  }();
  return document;
}

/// Wraps the document and asks everything that starting an ad asks.
void documentWrapAndQuery(benchmark::State& state) {
  const std::string& document = streamInfoDocument();
  for (auto _ : state) {
    const auto info = XELStreamInfo::initWithStreamInfo(xel::JSONValue::parse(document).value);
    if (info->eventArrayForTime(100).empty()) state.SkipWithError("no events found");
    benchmark::DoNotOptimize(info->vastForAdKey("ad-1-b"));
    benchmark::DoNotOptimize(info->adPositionForAdKey("ad-1-b"));
    benchmark::DoNotOptimize(info->durationForAdKey("ad-1-b"));
    benchmark::DoNotOptimize(info->totalAdsForAdBreakKey("break-1"));
    benchmark::DoNotOptimize(info->previousAdsDurationForAdKey("ad-1-b"));
    benchmark::DoNotOptimize(
        XELStreamInfo::adBreakIndexForStartTime_cuepoints(100, info->cuepoints()));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
}
BENCHMARK(documentWrapAndQuery)->Unit(benchmark::kMillisecond);

void boostJSONBareParse(benchmark::State& state) {
  const std::string& document = streamInfoDocument();
  for (auto _ : state) benchmark::DoNotOptimize(boost::json::parse(document));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
}
BENCHMARK(boostJSONBareParse)->Unit(benchmark::kMillisecond);

const xel::bench::AddRatio ratio({"stream info of 2 MB, to the bare parse", "documentWrapAndQuery",
                                  "boostJSONBareParse", xel::bench::Ratio::Bound::atMost, 1.2});

}  // namespace
