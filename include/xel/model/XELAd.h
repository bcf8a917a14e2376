#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "xel/model/TrackedEvents.h"
#include "xel/model/XELAdBreakInfo.h"
#include "xel/model/XELCompanion.h"
#include "xel/model/XELCreative.h"

/// One ad of a stitched ad break.
///
/// Ownership: shared; a host may keep an ad as long as it likes. The library no longer changes an
/// ad once it has handed it out, and a host should not either. Not copyable; equality is identity.
/// Threads: main run loop. Errors: no operation fails.
class XEL_EXPORT XELAd final : public xel::TrackedEvents {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// An empty ad, for the library's own parsers. Never null.
  static std::shared_ptr<XELAd> initPrivate();
  explicit XELAd(Token) {}

  /// The "id" of the VAST Ad element.
  const std::optional<std::string>& adID() const noexcept { return adID_; }
  void setAdID(std::optional<std::string> adID) { adID_ = std::move(adID); }

  const std::optional<std::string>& adTitle() const noexcept { return adTitle_; }
  void setAdTitle(std::optional<std::string> title) { adTitle_ = std::move(title); }

  const std::optional<std::string>& adSystem() const noexcept { return adSystem_; }
  void setAdSystem(std::optional<std::string> system) { adSystem_ = std::move(system); }

  const std::optional<std::string>& adDescription() const noexcept { return adDescription_; }
  void setAdDescription(std::optional<std::string> text) { adDescription_ = std::move(text); }

  /// Seconds, from the stream's ad metadata; whatever the VAST document says is not used.
  double duration() const noexcept { return duration_; }
  void setDuration(double duration) noexcept { duration_ = duration; }

  /// 1-based place in the ad's break; -1 when the stream does not say.
  std::int64_t adPosition() const noexcept { return adPosition_; }
  void setAdPosition(std::int64_t position) noexcept { adPosition_ = position; }

  /// Present in every ad that a delegate sees.
  const std::shared_ptr<XELAdBreakInfo>& adBreakInfo() const noexcept { return adBreakInfo_; }
  void setAdBreakInfo(std::shared_ptr<XELAdBreakInfo> info) { adBreakInfo_ = std::move(info); }

  /// In document order.
  const std::vector<std::shared_ptr<XELCompanion>>& companions() const noexcept {
    return companions_;
  }
  void setCompanions(std::vector<std::shared_ptr<XELCompanion>> companions) {
    companions_ = std::move(companions);
  }
  void addCompanions(const std::vector<std::shared_ptr<XELCompanion>>& companions);

  /// The ad's key in the stream's ad metadata.
  const std::optional<std::string>& adKey() const noexcept { return adKey_; }
  void setAdKey(std::optional<std::string> adKey) { adKey_ = std::move(adKey); }

  /// Seconds of stream time at which the ad was found to start.
  double adStartTime() const noexcept { return adStartTime_; }
  void setAdStartTime(double time) noexcept { adStartTime_ = time; }

  /// In document order.
  const std::vector<std::shared_ptr<XELCreative>>& creatives() const noexcept { return creatives_; }
  void setCreatives(std::vector<std::shared_ptr<XELCreative>> creatives) {
    creatives_ = std::move(creatives);
  }
  void addCreatives(const std::vector<std::shared_ptr<XELCreative>>& creatives);

  /// The creative whose tracking URLs are pinged with the ad's: the first linear one of
  /// `creatives`, which keeps it alive. Null when none is linear.
  std::shared_ptr<XELCreative> selectedCreative() const noexcept {
    return selectedCreative_.lock();
  }
  void setSelectedCreative(const std::shared_ptr<XELCreative>& creative) noexcept {
    selectedCreative_ = creative;
  }

 private:
  std::optional<std::string> adID_;
  std::optional<std::string> adTitle_;
  std::optional<std::string> adSystem_;
  std::optional<std::string> adDescription_;
  double duration_ = 0;
  std::int64_t adPosition_ = 0;
  std::shared_ptr<XELAdBreakInfo> adBreakInfo_;
  std::vector<std::shared_ptr<XELCompanion>> companions_;
  std::optional<std::string> adKey_;
  double adStartTime_ = 0;
  std::vector<std::shared_ptr<XELCreative>> creatives_;
  std::weak_ptr<XELCreative> selectedCreative_;
};
