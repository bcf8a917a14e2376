#include "serve/StreamPlan.h"

#include <numeric>
#include <utility>

#include "xel/simulation/StreamInfoBuilder.h"

namespace xel::serve {
namespace {

/// Live breaks every `period` seconds, as many as have room.
std::vector<PlannedBreak> repeated(double first, double period,
                                   const std::vector<double>& adDurations, double duration) {
  std::vector<PlannedBreak> breaks;
  for (double start = first;; start += period) {
    PlannedBreak next = {"break-" + std::to_string(breaks.size() + 1), start, adDurations};
    if (start + next.duration() > duration) return breaks;
    breaks.push_back(std::move(next));
  }
}

}  // namespace

double PlannedBreak::duration() const {
  return std::accumulate(adDurations.begin(), adDurations.end(), 0.0);
}

const StreamPlan& prerollPlan() {
  static const StreamPlan plan = {9, {{"preroll", 0, {4, 5}}}};
  return plan;
}

StreamPlan namedPlan(StreamKind kind, double liveDuration) {
  if (kind == StreamKind::vod) {
    return {120, {{"break-1", 10, {8, 10, 6.5}}, {"break-2", 60, {15, 10}}}};
  }
  return {liveDuration, repeated(10, 30, {4, 6, 5.5}, liveDuration)};
}

StreamPlan mediaPlan(StreamKind kind, double liveDuration) {
  if (kind == StreamKind::vod) return {50, {{"break-1", 10, {4, 5, 6}}, {"break-2", 35, {5}}}};
  // Between two breaks lie 16 s of content: whole segments of it.
  return {liveDuration, repeated(8, 31, {4, 5, 6}, liveDuration)};
}

std::string adKey(const PlannedBreak& planned, std::size_t index) {
  return planned.key + "-ad-" + std::to_string(index + 1);
}

std::vector<StreamText> textsOf(const StreamPlan& plan) {
  auto builder = simulation::StreamInfoBuilder::live();
  for (const PlannedBreak& planned : plan.breaks) {
    builder.addBreak(planned.key, planned.start);
    for (std::size_t i = 0; i < planned.adDurations.size(); ++i) {
      builder.addAd(adKey(planned, i), planned.adDurations[i]);
    }
  }
  std::vector<StreamText> texts;
  for (auto& event : builder.events()) texts.push_back({event.time, std::move(event.text)});
  return texts;
}

}  // namespace xel::serve
