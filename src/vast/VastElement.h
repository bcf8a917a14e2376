#pragma once

#include <string_view>

namespace xel {

/// The elements of a VAST document that are looked at.
enum class VastElement {
  ad,
  adSystem,
  adTitle,
  companion,
  companionAds,
  creative,
  creatives,
  description,
  error,
  impression,
  linear,
  staticResource,
  tracking,
  universalAdId,
  other,
};

/// The element of that name, matched exactly.
inline VastElement vastElementNamed(std::string_view name) noexcept {
  using enum VastElement;
  // Lengths tell most names apart, so that a document costs few comparisons.
  switch (name.size()) {
    case 2:
      return name == "Ad" ? ad : other;
    case 5:
      return name == "Error" ? error : other;
    case 6:
      return name == "Linear" ? linear : other;
    case 7:
      return name == "AdTitle" ? adTitle : other;
    case 8:
      return name == "Tracking"   ? tracking
             : name == "Creative" ? creative
             : name == "AdSystem" ? adSystem
                                  : other;
    case 9:
      return name == "Companion" ? companion : name == "Creatives" ? creatives : other;
    case 10:
      return name == "Impression" ? impression : other;
    case 11:
      return name == "Description" ? description : other;
    case 12:
      return name == "CompanionAds" ? companionAds : other;
    case 13:
      return name == "UniversalAdId" ? universalAdId : other;
    case 14:
      return name == "StaticResource" ? staticResource : other;
    default:
      return other;
  }
}

}  // namespace xel
