#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "xel/platform/JSONValue.h"

#include "report/ReportModel.h"

namespace xel::report {

/// Follows the delegate calls: which breaks and ads there were, and how each of
/// them ended.
class AdTracker {
 public:
  /// Both must outlive the tracker.
  AdTracker(Report& report, const Moment& now) : report_(report), now_(now) {}

  /// A delegate call about an ad or a break; any other changes nothing.
  void addCall(std::string_view call, const JSONValue& line);

  /// The ad that started last, which is the one whose events are pinged.
  std::optional<std::size_t> lastStarted() const { return lastStarted_; }

  /// Ends what is still going on.
  void finish();

 private:
  void startBreak(const JSONValue& info);
  void startAd(const JSONValue& ad);
  void cutOff(const std::string& why);
  void completeAd();
  void endAd(AdOutcome outcome);
  void endBreak();
  /// The jump that left the ad that is playing or part of it; null when there
  /// was none.
  const Jump* lastJump() const;

  Report& report_;
  const Moment& now_;
  std::optional<std::size_t> lastStarted_;
  bool isPlaying_ = false;
  bool isInBreak_ = false;
  /// Of the ad that is playing: how many URLs each of its events pings.
  std::map<std::string, std::size_t, std::less<>> pingsOfEvents_;
};

/// "midpoint" for "adDidCrossMidpoint" and so on; empty for a call that reports
/// no ad event.
std::string_view adEventOf(std::string_view call);

}  // namespace xel::report
