#pragma once

#include <cstring>
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
  // Lengths tell most names apart; and of a constant length the compiler makes a comparison of
  // words, not a call.
  const auto is = [name]<std::size_t size>(const char(&literal)[size]) {
    return std::memcmp(name.data(), literal, size - 1) == 0;
  };
  switch (name.size()) {
    case 2:
      return is("Ad") ? ad : other;
    case 5:
      return is("Error") ? error : other;
    case 6:
      return is("Linear") ? linear : other;
    case 7:
      return is("AdTitle") ? adTitle : other;
    case 8:
      return is("Tracking")   ? tracking
             : is("Creative") ? creative
             : is("AdSystem") ? adSystem
                              : other;
    case 9:
      return is("Companion") ? companion : is("Creatives") ? creatives : other;
    case 10:
      return is("Impression") ? impression : other;
    case 11:
      return is("Description") ? description : other;
    case 12:
      return is("CompanionAds") ? companionAds : other;
    case 13:
      return is("UniversalAdId") ? universalAdId : other;
    case 14:
      return is("StaticResource") ? staticResource : other;
    default:
      return other;
  }
}

}  // namespace xel
