#include "model/XELStreamInfo.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "platform/SinglePrecision.h"

using xel::JSONValue;

namespace {

std::string textOf(const JSONValue& value) { return std::string(value.text().value_or("")); }

XELStreamInfo::Cuepoints::const_iterator cuepointAt(double time,
                                                    const XELStreamInfo::Cuepoints& cuepoints) {
  return std::find_if(cuepoints.begin(), cuepoints.end(), [time](const auto& cuepoint) {
    return cuepoint->startTime() <= time && time <= cuepoint->endTime();
  });
}

}  // namespace

std::shared_ptr<XELStreamInfo> XELStreamInfo::initWithStreamInfo(JSONValue streamInfo) {
  return std::make_shared<XELStreamInfo>(Token(), std::move(streamInfo));
}

std::string XELStreamInfo::eventForMetadata(std::string_view metadata) const {
  return textOf(streamInfo_["tags"][metadata]["type"]);
}

std::string XELStreamInfo::adKeyForMetadata(std::string_view metadata) const {
  return textOf(streamInfo_["tags"][metadata]["ad"]);
}

std::string XELStreamInfo::adBreakKeyForAdKey(std::string_view adKey) const {
  return textOf(streamInfo_["ads"][adKey]["break"]);
}

std::string XELStreamInfo::vastForAdKey(std::string_view adKey) const {
  return textOf(streamInfo_["ads"][adKey]["vast"]);
}

std::int64_t XELStreamInfo::adPositionForAdKey(std::string_view adKey) const {
  return streamInfo_["ads"][adKey]["position"].integer().value_or(-1);
}

double XELStreamInfo::durationForAdKey(std::string_view adKey) const {
  return xel::singlePrecision(streamInfo_["ads"][adKey]["duration"]);
}

std::int64_t XELStreamInfo::totalAdsForAdBreakKey(std::string_view breakKey) const {
  return streamInfo_["breaks"][breakKey]["ads"].integer().value_or(-1);
}

double XELStreamInfo::durationForAdBreakKey(std::string_view breakKey) const {
  return xel::singlePrecision(streamInfo_["breaks"][breakKey]["duration"]);
}

double XELStreamInfo::previousAdsDurationForAdKey(std::string_view adKey) const {
  const JSONValue ad = streamInfo_["ads"][adKey];
  const std::int64_t position = ad["position"].integer().value_or(-1);
  if (position < 1) return 0;
  const std::string_view breakKey = ad["break"].text().value_or("");
  double sum = 0;
  for (const PlacedAd& other : placedAds()) {
    if (other.position < position && other.breakKey == breakKey) sum += other.duration;
  }
  return sum;
}

const std::vector<XELStreamInfo::PlacedAd>& XELStreamInfo::placedAds() const {
  if (!placedAds_) {
    auto ads = std::make_unique<std::vector<PlacedAd>>();
    streamInfo_["ads"].forEachMember([&](std::string_view, const JSONValue& ad) {
      const std::int64_t position = ad["position"].integer().value_or(-1);
      if (position < 1) return;
      ads->push_back(
          {ad["break"].text().value_or(""), position, xel::singlePrecision(ad["duration"])});
    });
    placedAds_ = std::move(ads);
  }
  return *placedAds_;
}

std::vector<JSONValue> XELStreamInfo::eventArrayForTime(double seconds) const {
  // Both bounds are powers of two and so exact; the comparison also refuses what is not finite.
  if (!(seconds >= -0x1p63 && seconds < 0x1p63)) return {};
  std::array<char, 20> key;
  const auto end =
      std::to_chars(key.data(), key.data() + key.size(), static_cast<std::int64_t>(seconds));
  return streamInfo_["times"][{key.data(), static_cast<std::size_t>(end.ptr - key.data())}]
      .elements();
}

XELStreamInfo::Cuepoints XELStreamInfo::cuepoints() const {
  Cuepoints cuepoints;
  for (const JSONValue& entry : streamInfo_["cuepoints"].elements()) {
    const std::optional<double> start = entry["start"].number();
    const std::optional<double> end = entry["end"].number();
    if (start && end) cuepoints.push_back(XELCuepoint::initWithStartTime_endTime(*start, *end));
  }
  std::stable_sort(cuepoints.begin(), cuepoints.end(),
                   [](const auto& a, const auto& b) { return a->startTime() < b->startTime(); });
  return cuepoints;
}

const XELStreamInfo::Cuepoints& XELStreamInfo::knownCuepoints() const {
  if (!knownCuepoints_) knownCuepoints_ = std::make_unique<const Cuepoints>(cuepoints());
  return *knownCuepoints_;
}

std::int64_t XELStreamInfo::adBreakIndexForStartTime_cuepoints(double time,
                                                               const Cuepoints& cuepoints) {
  const auto found = cuepointAt(time, cuepoints);
  return found == cuepoints.end() ? -1 : found - cuepoints.begin();
}

double XELStreamInfo::timeOffsetForStartTime_cuepoints(double time, const Cuepoints& cuepoints) {
  const auto found = cuepointAt(time, cuepoints);
  return found == cuepoints.end() ? 0 : (*found)->startTime();
}
