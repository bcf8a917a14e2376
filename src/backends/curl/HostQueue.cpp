#include "backends/curl/HostQueue.h"

#include <memory>
#include <utility>

#include <curl/curl.h>

#include "backends/curl/CurlHandles.h"

namespace xel {
namespace {

constexpr std::size_t connectionsOverHTTP1 = 6;
constexpr std::size_t streamsOverHTTP2 = 64;

}  // namespace

std::string HostQueue::originOf(const std::string& url) {
  const std::unique_ptr<CURLU, CurlDeleter<curl_url_cleanup>> parsed(curl_url());
  if (!parsed || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK) return {};
  std::string origin;
  for (const auto& [part, separator] :
       {std::pair(CURLUPART_SCHEME, "://"), {CURLUPART_HOST, ":"}, {CURLUPART_PORT, ""}}) {
    char* text = nullptr;
    if (curl_url_get(parsed.get(), part, &text, CURLU_DEFAULT_PORT) != CURLUE_OK) return {};
    const std::unique_ptr<char, CurlDeleter<curl_free>> owned(text);
    origin.append(text).append(separator);
  }
  return origin;
}

void HostQueue::add(CurlJob job) {
  const auto deadline = job.deadline;
  Lane& lane = job.request.trackingEvent ? pings_ : others_;
  lane.waiting.emplace(deadline, std::move(job));
}

HostQueue::Lane& HostQueue::firstLane() {
  if (pings_.waiting.empty()) return others_;
  if (others_.waiting.empty()) return pings_;
  return pings_.waiting.begin()->first < others_.waiting.begin()->first ? pings_ : others_;
}

CurlJob HostQueue::takeFirst(Lane& lane) {
  return std::move(lane.waiting.extract(lane.waiting.begin()).mapped());
}

std::optional<CurlJob> HostQueue::start() {
  const std::size_t most = overHTTP2_ ? streamsOverHTTP2 : connectionsOverHTTP1;
  const bool isFull = pings_.active + others_.active >= most;
  Lane& lane = isFull ? others_ : firstLane();
  if (lane.waiting.empty() || (isFull && others_.active > 0)) return std::nullopt;
  ++lane.active;
  return takeFirst(lane);
}

std::optional<CurlJob> HostQueue::takeExpired(CurlJob::Clock::time_point now) {
  Lane& lane = firstLane();
  if (lane.waiting.empty() || lane.waiting.begin()->first > now) return std::nullopt;
  return takeFirst(lane);
}

std::optional<CurlJob::Clock::time_point> HostQueue::nextDeadline() const {
  std::optional<CurlJob::Clock::time_point> next;
  for (const Lane* lane : {&pings_, &others_}) {
    if (lane->waiting.empty()) continue;
    const auto deadline = lane->waiting.begin()->first;
    if (!next || deadline < *next) next = deadline;
  }
  return next;
}

}  // namespace xel
