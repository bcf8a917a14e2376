#include "report/RequestTracker.h"

#include <utility>

namespace xel::report {
namespace {

constexpr std::int64_t firstFailure = 400;

std::string textOf(const JSONValue& value) { return std::string(value.text().value_or("")); }

}  // namespace

std::string errorText(const JSONValue& error) {
  if (!error.isObject()) return {};
  auto text = textOf(error["description"]);
  if (text.empty()) {
    text = textOf(error["domain"]) + ' ' + std::to_string(error["code"].integer().value_or(0));
  }
  const auto underlying = errorText(error["underlying"]);
  return underlying.empty() ? text : text + " (" + underlying + ')';
}

void RequestTracker::addRequest(const JSONValue& line, std::optional<std::size_t> playingAd) {
  const auto id = line["id"].integer().value_or(-1);
  if (!firstRequest_) firstRequest_ = now_.time;
  if (!line.has("pingEvent")) {
    const bool isFirst = fetches_++ == 0;
    openFetches_[id] = {now_.time, textOf(line["url"]), isFirst};
    return;
  }
  const auto index = report_.pings.size();
  report_.pings.push_back({.time = now_.time,
                           .position = now_.position,
                           .event = textOf(line["pingEvent"]),
                           .url = textOf(line["url"])});
  openPings_[id] = index;
  if (report_.pings.back().event == "start") {
    pingsOfNextAd_.push_back(index);
  } else {
    report_.pings.back().ad = playingAd;
  }
}

void RequestTracker::adDidStart(std::size_t ad) {
  for (const auto index : pingsOfNextAd_) report_.pings[index].ad = ad;
  pingsOfNextAd_.clear();
}

std::optional<RequestTracker::Answer> RequestTracker::addResult(const JSONValue& line) {
  const auto id = line["id"].integer().value_or(-1);
  const auto status = line["status"].integer();
  const auto error = errorText(line["error"]);
  const auto milliseconds = line["ms"].number();
  const bool isFailure = !status || *status >= firstFailure;

  if (const auto ping = openPings_.extract(id)) {
    auto& result = report_.pings[ping.mapped()];
    result.outcome = isFailure ? PingOutcome::failed : PingOutcome::accepted;
    result.status = status;
    result.error = error;
    result.milliseconds = milliseconds;
    return std::nullopt;
  }
  auto fetch = openFetches_.extract(id);
  if (!fetch) return std::nullopt;
  addFetchEvent(fetch.mapped(), status ? "HTTP " + std::to_string(*status) : error, isFailure)
      .milliseconds = milliseconds;
  if (isFailure) return std::nullopt;
  return Answer{std::move(fetch.mapped().url), textOf(line["body"]), fetch.mapped().isStreamInit};
}

Event& RequestTracker::addFetchEvent(const Fetch& fetch, std::string detail, bool isFailure) {
  return report_.events.emplace_back(
      Event{.time = fetch.time,
            .row = Event::Row::documents,
            .name = fetch.isStreamInit ? "stream request" : "document",
            .detail = std::move(detail),
            .isFailure = isFailure});
}

void RequestTracker::finish() {
  for (const auto& [id, fetch] : openFetches_) addFetchEvent(fetch, "no answer", true);
}

}  // namespace xel::report
