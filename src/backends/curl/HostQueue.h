#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "backends/curl/CurlJob.h"

namespace xel {

/// The requests to one scheme, host and port: how many are under way, and which ones wait.
///
/// libcurl could queue by itself, but what it keeps back can stall until its time-out.
/// I/O thread only.
class HostQueue {
 public:
  /// "scheme://host:port" of an absolute URL; empty if libcurl cannot read it.
  static std::string originOf(const std::string& url);

  void add(CurlJob job);

  /// The waiting job with the earliest deadline, which now counts as under way; absent if none
  /// waits or none may start now.
  std::optional<CurlJob> start();
  /// A job that was under way has ended.
  void ended() noexcept { --active_; }
  /// The host has answered, so it is known what it speaks.
  void answered(bool overHTTP2) noexcept { overHTTP2_ = overHTTP2; }

  /// A waiting job whose time is up; absent if there is none.
  std::optional<CurlJob> takeExpired(CurlJob::Clock::time_point now);
  /// The earliest deadline of a waiting job.
  std::optional<CurlJob::Clock::time_point> nextDeadline() const;

  /// Whether nothing is lost when this queue is forgotten.
  bool forgettable() const noexcept { return active_ == 0 && waiting_.empty() && !overHTTP2_; }

 private:
  CurlJob takeFirst();

  std::multimap<CurlJob::Clock::time_point, CurlJob> waiting_;
  std::size_t active_ = 0;
  bool overHTTP2_ = false;
};

}  // namespace xel
