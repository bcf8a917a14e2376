#include "xel/model/TrackedEvents.h"

namespace xel {

void TrackedEvents::addEvent_trackingURL(std::string_view event, std::string url) {
  if (!lastFiled_ || lastFiled_->first != event) {
    auto filed = trackingURLs_.find(event);
    if (filed == trackingURLs_.end()) {
      constexpr std::size_t usualVendorsPerEvent = 8;
      filed = trackingURLs_.emplace(event, std::vector<std::string>()).first;
      filed->second.reserve(usualVendorsPerEvent);
    }
    lastFiled_ = &*filed;
  }
  lastFiled_->second.push_back(std::move(url));
}

std::optional<std::vector<std::string>> TrackedEvents::trackingURLsForEvent(
    std::string_view event) const {
  const auto filed = trackingURLs_.find(event);
  if (filed == trackingURLs_.end()) return std::nullopt;
  return filed->second;
}

}  // namespace xel
