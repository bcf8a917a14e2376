#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/XMLOutline.h"

namespace xel::inspect {

/// Which reader of the library sees an element.
enum class VastRegion { outside, ad, creatives, companions };

/// Where an element stands in a VAST document. Indexes are those of the outline's elements.
struct VastContext {
  VastRegion region = VastRegion::outside;
  /// The outermost Ad around it, or itself; so the rest.
  std::optional<std::size_t> ad;
  std::optional<std::size_t> creative;
  std::optional<std::size_t> linear;
  std::optional<std::size_t> companion;
};

/// A piece of text that the library files as a tracking URL.
struct FiledURL {
  /// In lower case; "start" for an impression.
  std::string event;
  const XMLElement* element;
  const XMLPiece* piece;
};

/// A VAST document with what the library makes of its places.
class VastOutline {
 public:
  explicit VastOutline(std::string_view vast);

  const std::vector<XMLElement>& elements() const noexcept { return xml_.elements; }
  const VastContext& contextOf(std::size_t element) const { return contexts_[element]; }
  const std::optional<XMLFault>& fault() const noexcept { return xml_.fault; }

  /// The Ad elements that are read, in order; only the first counts.
  const std::vector<std::size_t>& ads() const noexcept { return ads_; }
  /// Whether the element belongs to the first ad.
  bool isOfFirstAd(std::size_t element) const;
  /// The linear creatives of the first ad; the first is selected.
  const std::vector<std::size_t>& linears() const noexcept { return linears_; }

  /// What the first ad pings for an event: its own URLs, then those of its selected creative.
  std::vector<FiledURL> pingsOf(std::string_view event) const;
  /// The event under which an element's text is filed; absent when the element holds no URL of an
  /// event, or none that is kept.
  std::optional<std::string> eventOf(std::size_t element) const;

 private:
  XMLOutline xml_;
  std::vector<VastContext> contexts_;
  std::vector<std::size_t> ads_;
  std::vector<std::size_t> linears_;
};

/// Whether the element holds a URL of an event, wherever it stands.
bool isTrackingElement(const XMLElement& element);

bool isPingedEvent(std::string_view event);

}  // namespace xel::inspect
