#include "simulate/TextSchedule.h"

#include <algorithm>
#include <map>

namespace xel::simulate {
namespace {

/// When an ad's event happens, in seconds from the ad's start.
double offsetOf(const std::string& type, double duration) {
  if (type == "firstquartile") return duration / 4;
  if (type == "midpoint") return duration / 2;
  if (type == "thirdquartile") return duration * 3 / 4;
  if (type == "complete") return std::max(duration - 0.1, duration * 0.9);
  return 0;
}

}  // namespace

std::vector<std::pair<double, std::string>> scheduleTexts(const StreamDocument& document) {
  struct Span {
    double start;
    double duration;
  };
  std::map<std::string, Span> spans;
  double time = 10;
  for (const auto& adBreak : document.breaks) {
    auto ads = adBreak.ads;
    std::stable_sort(ads.begin(), ads.end(), [&](std::size_t a, std::size_t b) {
      return document.ads[a].position.value_or(0) < document.ads[b].position.value_or(0);
    });
    for (const auto index : ads) {
      const auto& ad = document.ads[index];
      const double duration = std::max(ad.duration.value_or(0), 0.0);
      spans[ad.key] = {time, duration};
      time += duration;
    }
    time += 30;
  }
  std::vector<std::pair<double, std::string>> texts;
  for (const auto& [text, event] : document.tags) {
    const auto span = spans.find(event.adKey);
    if (span == spans.end()) {
      texts.emplace_back(time++, text);
    } else {
      texts.emplace_back(span->second.start + offsetOf(event.type, span->second.duration), text);
    }
  }
  std::stable_sort(texts.begin(), texts.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  return texts;
}

}  // namespace xel::simulate
