#include <map>
#include <string>

#include <benchmark/benchmark.h>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "xel/platform/JSONValue.h"

#include "bench/Allocations.h"
#include "bench/Documents.h"
#include "bench/Figures.h"
#include "model/XELStreamInfo.h"
#include "vast/XELVastParser.h"

namespace xel::bench {
namespace {

const std::string& documentOf(const benchmark::State& state) {
  static std::map<std::int64_t, std::string> documents;
  std::string& document = documents[state.range(0)];
  if (document.empty()) document = streamInfoDocument(static_cast<int>(state.range(0)));
  return document;
}

/// Everything that starting an ad asks of a document, but for its VAST.
void query(const XELStreamInfo& info, const std::string& adKey, const std::string& breakKey) {
  benchmark::DoNotOptimize(info.adBreakKeyForAdKey(adKey));
  benchmark::DoNotOptimize(info.adPositionForAdKey(adKey));
  benchmark::DoNotOptimize(info.durationForAdKey(adKey));
  benchmark::DoNotOptimize(info.totalAdsForAdBreakKey(breakKey));
  benchmark::DoNotOptimize(info.durationForAdBreakKey(breakKey));
  benchmark::DoNotOptimize(info.previousAdsDurationForAdKey(adKey));
  benchmark::DoNotOptimize(
      XELStreamInfo::adBreakIndexForStartTime_cuepoints(100, info.knownCuepoints()));
}

/// Reads a document, and starts one ad.
void document(benchmark::State& state) {
  const std::string& text = documentOf(state);
  for (auto _ : state) {
    const auto info = XELStreamInfo::initWithStreamInfo(JSONValue::parse(text).value);
    if (info->eventArrayForTime(100).empty()) state.SkipWithError("no events found");
    benchmark::DoNotOptimize(info->vastForAdKey("ad-1-b"));
    query(*info, "ad-1-b", "break-1");
  }
  const double before = heapBytes();
  const auto info = XELStreamInfo::initWithStreamInfo(JSONValue::parse(text).value);
  state.counters["kept"] = heapBytes() - before;
}
BENCHMARK(document)->Arg(16)->Arg(333)->Arg(6660);

void boostJSONBareParse(benchmark::State& state) {
  const std::string& text = documentOf(state);
  for (auto _ : state) benchmark::DoNotOptimize(boost::json::parse(text));
  const double before = heapBytes();
  const boost::json::value value = boost::json::parse(text);
  state.counters["kept"] = heapBytes() - before;
}
BENCHMARK(boostJSONBareParse)->Arg(16)->Arg(333)->Arg(6660);

constexpr int breaksOf2000Ads = 667;

/// An ad with a VAST document of 30 KB, from a document of 2,000 ads.
void adFromItsDocument(benchmark::State& state) {
  const auto info = XELStreamInfo::initWithStreamInfo(
      JSONValue::parse(streamInfoDocument(breaksOf2000Ads, vastDocument(6))).value);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        XELVastParser::init()->parseVastDocument(info->vastForAdKey("ad-600-c")));
    query(*info, "ad-600-c", "break-600");
  }
}
BENCHMARK(adFromItsDocument);

/// What goes through a whole document of 5,000 ads: once, when the first of them starts.
void lookupsThroughTheDocument(benchmark::State& state) {
  const JSONValue document = JSONValue::parse(streamInfoDocument(1667)).value;
  for (auto _ : state) {
    const auto info = XELStreamInfo::initWithStreamInfo(document);
    benchmark::DoNotOptimize(info->previousAdsDurationForAdKey("ad-1600-c"));
    benchmark::DoNotOptimize(info->knownCuepoints());
  }
}
BENCHMARK(lookupsThroughTheDocument);

double ratioToBareParse(const Results& results, const std::string& breaks,
                        const std::string& quantity) {
  return results.counter("document/" + breaks, quantity) /
         results.counter("boostJSONBareParse/" + breaks, quantity);
}

constexpr auto atMost = Figure::Bound::atMost;

const AddFigure figures[] = {
    AddFigure({"document of 100 KB read and asked for an ad, to Boost.JSON's bare parse", "×",
               atMost, 1.1, [](const Results& r) { return ratioToBareParse(r, "16", "time"); }}),
    AddFigure({"document of 2 MB, the same", "×", atMost, 1.1,
               [](const Results& r) { return ratioToBareParse(r, "333", "time"); }}),
    AddFigure({"document of 40 MB, the same", "×", atMost, 1.1,
               [](const Results& r) { return ratioToBareParse(r, "6660", "time"); }}),
    AddFigure({"memory of a document of 100 KB, to the bare parse", "×", atMost, 1.2,
               [](const Results& r) { return ratioToBareParse(r, "16", "kept"); }}),
    AddFigure({"memory of a document of 2 MB, the same", "×", atMost, 1.2,
               [](const Results& r) { return ratioToBareParse(r, "333", "kept"); }}),
    AddFigure({"memory of a document of 40 MB, the same", "×", atMost, 1.2,
               [](const Results& r) { return ratioToBareParse(r, "6660", "kept"); }}),
    AddFigure({"ad after the first of a document of 2,000, to the parse of its 30 KB of VAST", "×",
               atMost, 1.2,
               [](const Results& r) { return r.time("adFromItsDocument") / r.time("vast/6"); }}),
    AddFigure({"first ad of a document of 5,000: finding all breaks and cue points, once", "µs",
               atMost, 1000,
               [](const Results& r) { return r.time("lookupsThroughTheDocument") / 1e3; }}),
};

}  // namespace
}  // namespace xel::bench
