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
  waiting_.emplace(deadline, std::move(job));
}

CurlJob HostQueue::takeFirst() { return std::move(waiting_.extract(waiting_.begin()).mapped()); }

std::optional<CurlJob> HostQueue::start() {
  const std::size_t most = overHTTP2_ ? streamsOverHTTP2 : connectionsOverHTTP1;
  if (waiting_.empty() || active_ >= most) return std::nullopt;
  ++active_;
  return takeFirst();
}

std::optional<CurlJob> HostQueue::takeExpired(CurlJob::Clock::time_point now) {
  if (waiting_.empty() || waiting_.begin()->first > now) return std::nullopt;
  return takeFirst();
}

std::optional<CurlJob::Clock::time_point> HostQueue::nextDeadline() const {
  if (waiting_.empty()) return std::nullopt;
  return waiting_.begin()->first;
}

}  // namespace xel
