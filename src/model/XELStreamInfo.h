#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xel/model/XELCuepoint.h"
#include "xel/platform/JSONValue.h"

/// One stream info document: which ads and breaks the stitched stream holds, where they are, and
/// which events fire when.
///
/// Times and durations are seconds of stream time. A lookup that finds nothing, or a value of the
/// wrong type, answers "", -1, 0 or an empty list.
/// Ownership: shared; keeps the parsed document alive. Threads: main run loop.
class XELStreamInfo final {
  struct Token {
    explicit Token() = default;
  };

 public:
  using Cuepoints = std::vector<std::shared_ptr<XELCuepoint>>;

  /// Never null.
  static std::shared_ptr<XELStreamInfo> initWithStreamInfo(xel::JSONValue streamInfo);
  XELStreamInfo(Token, xel::JSONValue streamInfo) noexcept : streamInfo_(std::move(streamInfo)) {}
  XELStreamInfo(const XELStreamInfo&) = delete;
  XELStreamInfo& operator=(const XELStreamInfo&) = delete;

  const xel::JSONValue& streamInfo() const noexcept { return streamInfo_; }
  void setStreamInfo(xel::JSONValue streamInfo) noexcept {
    streamInfo_ = std::move(streamInfo);
    placedAds_.reset();
    knownCuepoints_.reset();
  }

  std::string eventForMetadata(std::string_view metadata) const;
  std::string adKeyForMetadata(std::string_view metadata) const;
  std::string adBreakKeyForAdKey(std::string_view adKey) const;
  std::string vastForAdKey(std::string_view adKey) const;
  /// 1-based place of the ad in its break.
  std::int64_t adPositionForAdKey(std::string_view adKey) const;
  /// Read at single precision: 10.1 is 10.100000381469727.
  double durationForAdKey(std::string_view adKey) const;
  std::int64_t totalAdsForAdBreakKey(std::string_view breakKey) const;
  /// Read at single precision.
  double durationForAdBreakKey(std::string_view breakKey) const;
  /// The summed durations of the ads that stand before this one in its break.
  double previousAdsDurationForAdKey(std::string_view adKey) const;
  /// The event objects of the whole second that the time falls in, as they stand.
  std::vector<xel::JSONValue> eventArrayForTime(double seconds) const;
  /// New, unplayed cue points, ascending by start.
  Cuepoints cuepoints() const;
  /// The same, made once for this document: for their times, not to be handed on.
  const Cuepoints& knownCuepoints() const;

  /// Index of the first cue point that holds the time, both ends included.
  static std::int64_t adBreakIndexForStartTime_cuepoints(double time, const Cuepoints& cuepoints);
  /// Start of the first cue point that holds the time, both ends included.
  static double timeOffsetForStartTime_cuepoints(double time, const Cuepoints& cuepoints);

 private:
  struct PlacedAd {
    std::string_view breakKey;
    std::int64_t position;
    double duration;
  };

  /// The ads that have a position, in document order.
  const std::vector<PlacedAd>& placedAds() const;

  xel::JSONValue streamInfo_;
  /// Made when first asked for, since most live documents are replaced unasked.
  mutable std::unique_ptr<const std::vector<PlacedAd>> placedAds_;
  mutable std::unique_ptr<const Cuepoints> knownCuepoints_;
};
