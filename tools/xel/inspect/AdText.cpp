#include "inspect/AdText.h"

#include <string>
#include <vector>

#include "common/PrintableText.h"
#include "inspect/AdEvents.h"
#include "inspect/VastOutline.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

constexpr std::size_t labelWidth = 15;

void addText(std::string_view label, const std::optional<std::string>& text, TextPage& page) {
  if (text) page.field(2, label, labelWidth, *text);
}

std::string creativeText(const XELCreative& creative, bool isSelected) {
  auto text = (isSelected ? "* " : "  ") + creative.adID().value_or("without id");
  text += creative.isLinear() ? ", linear" : ", not linear";
  text += ", sequence " + std::to_string(creative.sequence());
  text += ", universal ad id " + creative.universalAdIdValue().value_or("none");
  if (creative.universalAdIdRegistry()) text += " of " + *creative.universalAdIdRegistry();
  return text + (isSelected ? " (selected)" : "");
}

std::string companionText(const XELCompanion& companion) {
  auto text = std::to_string(companion.width()) + "x" + std::to_string(companion.height());
  if (companion.apiFramework()) text += ", " + *companion.apiFramework();
  const auto& resource = companion.staticResourceURL();
  const bool isBlank = resource && resource->find_first_not_of(" \t\r\n") == std::string::npos;
  return text + "  " + (!resource ? "no resource" : isBlank ? "(white space)" : *resource);
}

void addFields(const XELAd& ad, TextPage& page) {
  addText("id", ad.adID(), page);
  addText("title", ad.adTitle(), page);
  addText("system", ad.adSystem(), page);
  addText("description", ad.adDescription(), page);
  std::string_view label = "creatives";
  for (const auto& creative : ad.creatives()) {
    page.field(2, label, labelWidth, creativeText(*creative, creative == ad.selectedCreative()));
    label = "";
  }
  label = "companions";
  for (const auto& companion : ad.companions()) {
    page.field(2, label, labelWidth, "  " + companionText(*companion));
    label = "";
  }
}

/// Where the ad stands in its break, and when.
void addBreak(const XELAd& ad, bool hasTimes, TextPage& page) {
  const auto& info = *ad.adBreakInfo();
  page.field(2, "position", labelWidth,
             countText(ad.adPosition()) + " of " + countText(info.totalAds()) + " in break " +
                 quoted(info.adBreakKey()) + " of " + numberText(info.duration()) + " s");
  page.field(2, "duration", labelWidth, numberText(ad.duration()) + " s");
  if (!hasTimes) return;
  page.field(2, "starts at", labelWidth,
             clockText(ad.adStartTime()) + ", break index " + std::to_string(info.adBreakIndex()) +
                 ", offset " + clockText(info.timeOffset()));
}

std::string whenText(const AdEvent& event, bool isInStream) {
  std::vector<std::string> times, tags;
  for (const auto second : event.seconds) times.push_back(clockText(second));
  for (const auto& tag : event.tags) tags.push_back("tag " + quoted(tag));
  if (!times.empty()) return " at " + listed(times);
  if (!tags.empty()) return " by " + listed(tags);
  return isInStream ? ", which nothing reports" : "";
}

void addPings(const std::vector<AdEvent>& events, bool isInStream, TextPage& page) {
  for (const auto& event : events) {
    const bool isHeardOf = event.isReported() && event.type != "creativeview";
    if (event.pings.empty() && !isHeardOf) continue;
    page.line(2, "on " + event.type + whenText(event, isInStream) +
                     (event.pings.empty() ? ": no pings" : ""));
    for (const auto& ping : event.pings) {
      const bool isBlank = ping.url.find_first_not_of(" \t\r\n") == std::string::npos;
      page.line(4, isBlank ? "(white space)" : ping.url);
      if (ping.refusal) page.line(6, "refused: " + *ping.refusal);
    }
  }
}

/// What is filed under events that are never pinged.
void addUnsent(const XELAd& ad, TextPage& page) {
  std::vector<std::string> events;
  const auto add = [&](const TrackingURLs& urls) {
    for (const auto& [event, list] : urls) {
      if (!isPingedEvent(event)) events.push_back(event + " (" + std::to_string(list.size()) + ")");
    }
  };
  add(ad.trackingURLs());
  if (const auto creative = ad.selectedCreative()) add(creative->trackingURLs());
  if (!events.empty()) page.field(2, "never sent", labelWidth, listed(events));
}

}  // namespace

void addAds(const Inspection& inspection, TextPage& page) {
  const auto& view = inspection.view;
  const bool isInStream = inspection.kind == DocumentKind::streamInfo;
  const auto events = adEvents(view);
  for (std::size_t i = 0; i < view.ads.size(); ++i) {
    const bool isReported = events[i].front().isReported();
    const auto& ad = view.ads[i].ad;
    const auto started = view.playThrough ? view.playThrough->ads[i] : nullptr;
    page.heading(isInStream ? "Ad " + quoted(view.document.ads[i].key) : "Ad");
    if (!ad) {
      page.line(2, "never starts: there is no VAST document that gives an ad");
      continue;
    }
    if (isInStream && !isReported) page.line(2, "never starts: nothing reports its start");
    if (isInStream) addBreak(started ? *started : *ad, started != nullptr, page);
    addFields(*ad, page);
    addPings(events[i], isInStream, page);
    addUnsent(*ad, page);
  }
}

}  // namespace xel::inspect
