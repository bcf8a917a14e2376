#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "xel/platform/Export.h"

/// The ad break that holds an ad, as it was known when the ad started. Immutable.
///
/// Ownership: shared. Each ad carries one of its own; those of one break are equal in content.
/// Threads: any. Errors: no operation fails.
class XEL_EXPORT XELAdBreakInfo final {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null; no value is checked.
  static std::shared_ptr<XELAdBreakInfo> initWithKey_totalAds_duration_adBreakIndex_timeOffset(
      std::string key, std::int64_t totalAds, double duration, std::int64_t adBreakIndex,
      double timeOffset);
  XELAdBreakInfo(Token, std::string key, std::int64_t totalAds, double duration,
                 std::int64_t adBreakIndex, double timeOffset);
  XELAdBreakInfo(const XELAdBreakInfo&) = delete;
  XELAdBreakInfo& operator=(const XELAdBreakInfo&) = delete;

  const std::string& adBreakKey() const noexcept { return adBreakKey_; }
  /// Number of ads in the break; -1 when the stream does not say.
  std::int64_t totalAds() const noexcept { return totalAds_; }
  /// Seconds; 0 when the stream does not say.
  double duration() const noexcept { return duration_; }
  /// Zero-based index among the stream's cue points; -1 when the ad started in none.
  std::int64_t adBreakIndex() const noexcept { return adBreakIndex_; }
  /// Start of that cue point in seconds of stream time; 0 when there is none.
  double timeOffset() const noexcept { return timeOffset_; }

 private:
  std::string adBreakKey_;
  std::int64_t totalAds_;
  double duration_;
  std::int64_t adBreakIndex_;
  double timeOffset_;
};
