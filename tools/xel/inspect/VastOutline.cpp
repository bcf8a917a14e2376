#include "inspect/VastOutline.h"

#include <algorithm>

#include "common/Lowercased.h"
#include "inspect/ClientView.h"

namespace xel::inspect {
namespace {

VastContext contextWithin(const VastContext& parent, const XMLElement& element, std::size_t index) {
  auto context = parent;
  const auto is = [&](std::string_view name) { return element.name == name; };
  switch (parent.region) {
    case VastRegion::outside:
      if (!is("Ad")) break;
      context.region = VastRegion::ad;
      context.ad = index;
      break;
    case VastRegion::ad:
      if (is("Creatives")) context.region = VastRegion::creatives;
      break;
    case VastRegion::creatives:
      if (is("CompanionAds")) context.region = VastRegion::companions;
      if (is("Creative") && !context.creative) context.creative = index;
      if (is("Linear") && !context.linear) context.linear = index;
      break;
    case VastRegion::companions:
      if (is("Companion") && !context.companion) context.companion = index;
      break;
  }
  return context;
}

}  // namespace

VastOutline::VastOutline(std::string_view vast) : xml_(XMLOutline::read(vast)) {
  contexts_.reserve(elements().size());
  for (std::size_t i = 0; i < elements().size(); ++i) {
    const auto& element = elements()[i];
    const auto parent = element.parent ? contexts_[*element.parent] : VastContext();
    contexts_.push_back(contextWithin(parent, element, i));
    if (contexts_[i].ad == i && element.isClosed) ads_.push_back(i);
    if (contexts_[i].linear == i && isOfFirstAd(i)) linears_.push_back(i);
  }
}

bool VastOutline::isOfFirstAd(std::size_t element) const {
  return !ads_.empty() && contexts_[element].ad == ads_.front();
}

std::vector<FiledURL> VastOutline::pingsOf(std::string_view event) const {
  std::vector<FiledURL> pings;
  const auto append = [&](std::optional<std::size_t> linear) {
    for (std::size_t i = 0; i < elements().size(); ++i) {
      if (!isOfFirstAd(i) || contexts_[i].linear != linear || eventOf(i) != event) continue;
      for (const auto& piece : elements()[i].pieces) {
        if (!piece.isBehindElement) pings.push_back({std::string(event), &elements()[i], &piece});
      }
    }
  };
  append(std::nullopt);
  if (!linears_.empty()) append(linears_.front());
  return pings;
}

std::optional<std::string> VastOutline::eventOf(std::size_t element) const {
  const auto& context = contexts_[element];
  const bool isKept = context.region == VastRegion::ad ||
                      (context.region == VastRegion::creatives && context.linear);
  const auto& name = elements()[element].name;
  if (!isKept) return std::nullopt;
  if (name == "Impression") return "start";
  if (name == "Error") return "error";
  const auto event = elements()[element].attribute("event");
  if (name != "Tracking" || !event) return std::nullopt;
  return lowercased(*event);
}

bool isTrackingElement(const XMLElement& element) {
  return element.name == "Impression" || element.name == "Error" || element.name == "Tracking";
}

bool isPingedEvent(std::string_view event) {
  return std::find(pingedEvents.begin(), pingedEvents.end(), event) != pingedEvents.end();
}

}  // namespace xel::inspect
