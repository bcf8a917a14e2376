#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xel/platform/Export.h"

namespace xel::simulation {

/// Writes a VAST document. A plain value.
///
/// Every text stands in a CDATA section with no white space around it, so that it reaches the ad
/// as it was given (only "]]>" needs two sections). What is added belongs to the ad, creative or
/// companion added last; one is added when there is none.
class XEL_EXPORT VastBuilder {
 public:
  /// One ad with everything that an ad can have: title, system and description; an impression; an
  /// error URL; a linear creative with a universal ad id and its tracking URLs; a companion.
  /// The URLs are `base`/`adKey`/NAME, where NAME is an event in lower case, "impression",
  /// "companion.png" or "companionview".
  /// @param adKey goes into URLs, so it must need no escaping there.
  static VastBuilder typical(std::string_view adKey,
                             std::string_view base = "https://tracking.example");

  /// @param id absent: the element has no such attribute.
  VastBuilder& ad(std::optional<std::string> id = std::nullopt);
  VastBuilder& title(std::string text);
  VastBuilder& system(std::string text);
  VastBuilder& description(std::string text);
  VastBuilder& impression(std::string url);
  VastBuilder& error(std::string url);
  /// A tracking URL of the ad itself, outside any creative.
  VastBuilder& tracking(std::string event, std::string url);

  /// A linear creative.
  VastBuilder& creative(std::optional<std::string> id = std::nullopt,
                        std::optional<std::int64_t> sequence = std::nullopt);
  VastBuilder& universalAdId(std::string registry, std::string value);
  VastBuilder& creativeTracking(std::string event, std::string url);

  /// A companion, in a creative of its own. Width and height in pixels.
  VastBuilder& companion(std::int64_t width, std::int64_t height, std::string resourceURL,
                         std::optional<std::string> apiFramework = std::nullopt);
  VastBuilder& companionTracking(std::string event, std::string url);

  /// The document as UTF-8 text.
  std::string build() const;

 private:
  /// An element's name, or an event's, and the text within.
  using Texts = std::vector<std::pair<std::string, std::string>>;
  struct Creative {
    std::optional<std::string> id;
    std::optional<std::int64_t> sequence;
    std::optional<std::pair<std::string, std::string>> universalAdId;
    Texts tracking;
  };
  struct Companion {
    std::int64_t width;
    std::int64_t height;
    std::string resourceURL;
    std::optional<std::string> apiFramework;
    Texts tracking;
  };
  struct Ad {
    std::optional<std::string> id;
    Texts texts;
    Texts tracking;
    std::vector<Creative> creatives;
    std::vector<Companion> companions;
  };

  Ad& lastAd();
  Creative& lastCreative();
  VastBuilder& text(std::string element, std::string text);
  static std::string trackingEvents(const Texts& tracking);
  static std::string creatives(const Ad& ad);

  std::vector<Ad> ads_;
};

}  // namespace xel::simulation
