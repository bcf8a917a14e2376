#include "backends/curl/CurlScheduler.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <utility>

namespace xel {
namespace {

/// Hosts of which it is remembered that they speak HTTP/2.
constexpr std::size_t mostKnownHosts = 64;

}  // namespace

CurlScheduler::CurlScheduler(CurlSettings settings, CompletionBox& results)
    : settings_(std::move(settings)), results_(results), multi_(curl_multi_init()) {
  if (!multi_) throw std::bad_alloc();
  // Without file descriptors it has none to be woken up by, and says so only when asked.
  if (curl_multi_wakeup(multi_.get()) != CURLM_OK) {
    throw std::system_error(std::make_error_code(std::errc::too_many_files_open));
  }
  // Idle connections to keep. By default it would shrink with the number of active transfers.
  curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, 64L);
}

CurlScheduler::~CurlScheduler() {
  for (const auto& [handle, active] : active_) curl_multi_remove_handle(multi_.get(), handle);
}

void CurlScheduler::add(CurlJob job) {
  const auto refuse = [&](std::string reason) {
    results_.finish(job.id,
                    {makeTransferError(TransferError::invalidRequest, std::move(reason)), {}});
  };
  if (auto reason = job.request.refusal()) return refuse(*std::move(reason));
  std::string origin = HostQueue::originOf(job.request.url);
  if (origin.empty()) return refuse("The host or port of the URL is not valid.");
  hosts_[std::move(origin)].add(std::move(job));
}

bool CurlScheduler::advance() {
  giveUpExpired();
  startWaiting();
  int running = 0;
  curl_multi_perform(multi_.get(), &running);
  return finishEnded();
}

void CurlScheduler::giveUpExpired() {
  const auto now = CurlJob::Clock::now();
  for (auto& [origin, queue] : hosts_) {
    while (const auto job = queue.takeExpired(now)) {
      results_.finish(job->id,
                      {makeTransferError(TransferError::timedOut,
                                         "Timed out waiting for earlier requests to " + origin),
                       {}});
    }
  }
}

void CurlScheduler::startWaiting() {
  for (auto host = hosts_.begin(); host != hosts_.end();) {
    while (auto job = host->second.start()) start(*host, *std::move(job));
    const bool isCrowded = hosts_.size() > mostKnownHosts;
    host = host->second.isForgettable(isCrowded) ? hosts_.erase(host) : std::next(host);
  }
}

void CurlScheduler::start(Host& host, CurlJob job) {
  auto active = std::make_unique<Active>(host, std::move(job), settings_);
  CURL* handle = active->transfer.handle();
  active_.emplace(handle, std::move(active));
  curl_multi_add_handle(multi_.get(), handle);
}

bool CurlScheduler::finishEnded() {
  bool any = false;
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    finish(message->easy_handle, message->data.result);
    any = true;
  }
  return any;
}

void CurlScheduler::finish(CURL* handle, CURLcode code) {
  const auto ended = std::move(active_.extract(handle).mapped());
  HostQueue& queue = ended->host.second;
  queue.ended(ended->transfer.isPing());
  if (code == CURLE_OK) {
    if (const auto overHTTP2 = ended->transfer.answeredOverHTTP2()) queue.answered(*overHTTP2);
  }
  results_.finish(ended->transfer.id(), ended->transfer.takeResult(code));
  curl_multi_remove_handle(multi_.get(), handle);
}

void CurlScheduler::wait() {
  using std::chrono::milliseconds;
  const auto now = CurlJob::Clock::now();
  milliseconds longest = std::chrono::hours(1);
  for (const auto& [origin, queue] : hosts_) {
    if (const auto deadline = queue.nextDeadline()) {
      longest =
          std::clamp(std::chrono::ceil<milliseconds>(*deadline - now), milliseconds(0), longest);
    }
  }
  curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(longest.count()), nullptr);
}

void CurlScheduler::wakeUp() { curl_multi_wakeup(multi_.get()); }

}  // namespace xel
