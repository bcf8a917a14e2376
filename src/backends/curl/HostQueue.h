#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "backends/curl/CurlJob.h"

namespace xel {

/// The requests to one scheme, host and port: how many are under way, and which ones wait.
///
/// Pings that hang hold up other pings, but no document: one request that is no ping may always be
/// under way, if need be as one more than there may be.
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
  void ended(bool wasPing) noexcept { --(wasPing ? pings_ : others_).active; }
  /// The host has answered, so it is known what it speaks.
  void answered(bool overHTTP2) noexcept { overHTTP2_ = overHTTP2; }

  /// A waiting job whose time is up; absent if there is none.
  std::optional<CurlJob> takeExpired(CurlJob::Clock::time_point now);
  /// The earliest deadline of a waiting job.
  std::optional<CurlJob::Clock::time_point> nextDeadline() const;

  /// Whether nothing is lost when this queue is forgotten; among many hosts, nothing but what the
  /// host is known to speak.
  bool isForgettable(bool isCrowded) const noexcept {
    return pings_.isIdle() && others_.isIdle() && (isCrowded || !overHTTP2_);
  }

 private:
  struct Lane {
    bool isIdle() const noexcept { return active == 0 && waiting.empty(); }

    std::multimap<CurlJob::Clock::time_point, CurlJob> waiting = {};
    std::size_t active = 0;
  };

  /// The lane of the waiting job with the earliest deadline; any lane if none waits.
  Lane& firstLane();
  static CurlJob takeFirst(Lane& lane);

  Lane pings_;
  Lane others_;
  bool overHTTP2_ = false;
};

}  // namespace xel
