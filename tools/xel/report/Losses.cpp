#include "report/Losses.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace xel::report {
namespace {

class LossList {
 public:
  void add(Loss loss) {
    const auto [entry, isNew] = indexes_.emplace(std::pair(loss.what, loss.why), losses_.size());
    if (isNew) {
      losses_.push_back(std::move(loss));
    } else {
      losses_[entry->second].count += loss.count;
    }
  }

  bool hasReason(std::string_view why) const {
    return std::any_of(losses_.begin(), losses_.end(),
                       [why](const Loss& loss) { return loss.why == why; });
  }

  std::vector<Loss> take() {
    std::stable_sort(losses_.begin(), losses_.end(),
                     [](const Loss& a, const Loss& b) { return a.severity < b.severity; });
    return std::move(losses_);
  }

 private:
  std::vector<Loss> losses_;
  std::map<std::pair<std::string, std::string>, std::size_t> indexes_;
};

std::string_view hostOf(std::string_view url) {
  const auto scheme = url.find("://");
  if (scheme != std::string_view::npos) url.remove_prefix(scheme + 3);
  return url.substr(0, url.find_first_of("/?#"));
}

void addPings(const Report& report, LossList& losses) {
  for (const auto& ping : report.pings) {
    if (ping.outcome == PingOutcome::accepted) continue;
    const bool isFailed = ping.outcome == PingOutcome::failed;
    losses.add({.what = "Ping to " + std::string(hostOf(ping.url)) +
                        (isFailed ? " failed" : " got no answer"),
                .why = !isFailed     ? "None had come when the recording ended."
                       : ping.status ? "HTTP " + std::to_string(*ping.status)
                                     : ping.error,
                .time = ping.time,
                .position = ping.position});
  }
}

void addAds(const Report& report, LossList& losses) {
  for (const auto& ad : report.ads) {
    if (ad.why.empty()) continue;
    Loss loss = {.severity = ad.isExpected ? Severity::note : Severity::error,
                 .why = ad.why,
                 .time = ad.start,
                 .position = ad.position};
    switch (ad.outcome) {
      case AdOutcome::completed:
        loss.what = "Ad completed without all of its quartiles";
        break;
      case AdOutcome::cutOff:
        loss.what = "Ad was cut off";
        break;
      case AdOutcome::notStarted:
        loss.what = "Ad did not start";
        break;
    }
    losses.add(std::move(loss));
  }
}

void addEvents(const Report& report, LossList& losses) {
  for (const auto& event : report.events) {
    if (!event.isFailure || event.name == "missed segments") continue;
    Loss loss = {.why = event.detail, .time = event.time, .position = event.position};
    if (event.row == Event::Row::documents) {
      loss.what = event.name == "document" ? "Document was not fetched" : "Stream request failed";
    } else if (event.name == "log") {
      loss.severity = Severity::warning;
      loss.what = "The library logged a fault";
    } else if (event.name == "failure") {
      loss.what = "The player failed";
    } else if (!losses.hasReason(event.detail)) {
      loss.what = "The host was given an error";
    } else {
      continue;
    }
    losses.add(std::move(loss));
  }
}

void addMetadata(const Report& report, LossList& losses) {
  if (report.missedSegments > 0) {
    losses.add({.severity = Severity::warning,
                .what = "Segment was not read",
                .why = "Texts of timed metadata in it were not delivered.",
                .count = report.missedSegments});
  }
  if (report.metadata.unknownTexts > 0) {
    losses.add({.severity = Severity::warning,
                .what = "Text of timed metadata led to no event",
                .why = "The document did not know it when it came.",
                .count = report.metadata.unknownTexts});
  }
}

}  // namespace

std::vector<Loss> lossesOf(const Report& report) {
  LossList losses;
  addPings(report, losses);
  addAds(report, losses);
  addEvents(report, losses);
  addMetadata(report, losses);
  if (!report.session.isWhole) {
    losses.add({.severity = Severity::note,
                .what = "The end of the recording",
                .why = "Its last line is incomplete.",
                .time = report.session.duration});
  }
  return losses.take();
}

}  // namespace xel::report
