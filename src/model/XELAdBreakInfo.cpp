#include "xel/model/XELAdBreakInfo.h"

#include <utility>

std::shared_ptr<XELAdBreakInfo>
XELAdBreakInfo::initWithKey_totalAds_duration_adBreakIndex_timeOffset(std::string key,
                                                                      std::int64_t totalAds,
                                                                      double duration,
                                                                      std::int64_t adBreakIndex,
                                                                      double timeOffset) {
  return std::make_shared<XELAdBreakInfo>(Token(), std::move(key), totalAds, duration, adBreakIndex,
                                          timeOffset);
}

XELAdBreakInfo::XELAdBreakInfo(Token, std::string key, std::int64_t totalAds, double duration,
                               std::int64_t adBreakIndex, double timeOffset)
    : adBreakKey_(std::move(key)),
      totalAds_(totalAds),
      duration_(duration),
      adBreakIndex_(adBreakIndex),
      timeOffset_(timeOffset) {}
