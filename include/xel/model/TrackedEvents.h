#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xel/platform/Export.h"

namespace xel {

/// Event name to tracking URLs, in the order in which they were filed.
using TrackingURLs = std::map<std::string, std::vector<std::string>, std::less<>>;

/// The tracking URLs of an ad, a creative or a companion, filed by event.
///
/// Event names are lower case and matched exactly: "start" (with the impressions), "creativeview",
/// "firstquartile", "midpoint", "thirdquartile", "complete", "error", and whatever other event a
/// VAST document names. Threads: main run loop. Errors: no operation fails.
class XEL_EXPORT TrackedEvents {
 public:
  const TrackingURLs& trackingURLs() const noexcept { return trackingURLs_; }
  void setTrackingURLs(TrackingURLs urls) {
    trackingURLs_ = std::move(urls);
    lastFiled_ = nullptr;
  }

  /// Files a URL after those already filed under the event; a URL filed twice is pinged twice.
  void addEvent_trackingURL(std::string_view event, std::string url);
  /// The URLs filed under exactly this name; absent if there are none.
  std::optional<std::vector<std::string>> trackingURLsForEvent(std::string_view event) const;

 protected:
  TrackedEvents() = default;
  ~TrackedEvents() = default;
  TrackedEvents(const TrackedEvents&) = delete;
  TrackedEvents& operator=(const TrackedEvents&) = delete;

 private:
  TrackingURLs trackingURLs_;
  /// Where the next URL probably goes too: documents file those of one event in a row.
  TrackingURLs::value_type* lastFiled_ = nullptr;
};

}  // namespace xel
