#include "xel/simulation/VastBuilder.h"

namespace xel::simulation {
namespace {

std::string cdata(const std::string& text) {
  std::string result = "<![CDATA[";
  std::string::size_type from = 0;
  for (auto end = text.find("]]>"); end != std::string::npos; end = text.find("]]>", from)) {
    result.append(text, from, end + 2 - from).append("]]><![CDATA[");
    from = end + 2;
  }
  return result.append(text, from).append("]]>");
}

std::string attribute(std::string_view name, std::string_view value) {
  std::string result = " ";
  result.append(name).append("=\"");
  for (const char c : value) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\t':
        result += "&#9;";
        break;
      case '\n':
        result += "&#10;";
        break;
      case '\r':
        result += "&#13;";
        break;
      default:
        result += c;
    }
  }
  return result + '"';
}

std::string attribute(std::string_view name, const std::optional<std::string>& value) {
  return value ? attribute(name, std::string_view(*value)) : std::string();
}

std::string attribute(std::string_view name, std::int64_t value) {
  return attribute(name, std::string_view(std::to_string(value)));
}

}  // namespace

VastBuilder VastBuilder::typical(std::string_view adKey, std::string_view base) {
  const std::string key(adKey);
  const std::string prefix = std::string(base) + "/" + key + "/";
  VastBuilder builder;
  builder.ad("id-" + key)
      .title("Title of " + key)
      .system("Example Ad System")
      .description("Description of " + key)
      .impression(prefix + "impression")
      .error(prefix + "error")
      .creative("creative-" + key, 1)
      .universalAdId("registry.example", "universal-" + key);
  constexpr std::pair<const char*, const char*> events[] = {{"start", "start"},
                                                            {"creativeView", "creativeview"},
                                                            {"firstQuartile", "firstquartile"},
                                                            {"midpoint", "midpoint"},
                                                            {"thirdQuartile", "thirdquartile"},
                                                            {"complete", "complete"}};
  for (const auto& [event, name] : events) builder.creativeTracking(event, prefix + name);
  return builder.companion(300, 250, prefix + "companion.png")
      .companionTracking("creativeView", prefix + "companionview");
}

VastBuilder& VastBuilder::ad(std::optional<std::string> id) {
  ads_.push_back({std::move(id), {}, {}, {}, {}});
  return *this;
}

VastBuilder& VastBuilder::title(std::string title) { return text("AdTitle", std::move(title)); }
VastBuilder& VastBuilder::system(std::string system) { return text("AdSystem", std::move(system)); }
VastBuilder& VastBuilder::description(std::string description) {
  return text("Description", std::move(description));
}
VastBuilder& VastBuilder::impression(std::string url) { return text("Impression", std::move(url)); }
VastBuilder& VastBuilder::error(std::string url) { return text("Error", std::move(url)); }

VastBuilder& VastBuilder::tracking(std::string event, std::string url) {
  lastAd().tracking.emplace_back(std::move(event), std::move(url));
  return *this;
}

VastBuilder& VastBuilder::creative(std::optional<std::string> id,
                                   std::optional<std::int64_t> sequence) {
  lastAd().creatives.push_back({std::move(id), sequence, std::nullopt, {}});
  return *this;
}

VastBuilder& VastBuilder::universalAdId(std::string registry, std::string value) {
  lastCreative().universalAdId.emplace(std::move(registry), std::move(value));
  return *this;
}

VastBuilder& VastBuilder::creativeTracking(std::string event, std::string url) {
  lastCreative().tracking.emplace_back(std::move(event), std::move(url));
  return *this;
}

VastBuilder& VastBuilder::companion(std::int64_t width, std::int64_t height,
                                    std::string resourceURL,
                                    std::optional<std::string> apiFramework) {
  lastAd().companions.push_back(
      {width, height, std::move(resourceURL), std::move(apiFramework), {}});
  return *this;
}

VastBuilder& VastBuilder::companionTracking(std::string event, std::string url) {
  if (lastAd().companions.empty()) companion(0, 0, {});
  lastAd().companions.back().tracking.emplace_back(std::move(event), std::move(url));
  return *this;
}

std::string VastBuilder::build() const {
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><VAST version=\"4.0\">";
  for (const Ad& ad : ads_) {
    xml += "<Ad" + attribute("id", ad.id) + "><InLine>";
    for (const auto& [element, text] : ad.texts) {
      xml.append("<").append(element).append(">").append(cdata(text));
      xml.append("</").append(element).append(">");
    }
    xml += trackingEvents(ad.tracking) + creatives(ad) + "</InLine></Ad>";
  }
  return xml + "</VAST>";
}

VastBuilder::Ad& VastBuilder::lastAd() {
  if (ads_.empty()) ad();
  return ads_.back();
}

VastBuilder::Creative& VastBuilder::lastCreative() {
  if (lastAd().creatives.empty()) creative();
  return lastAd().creatives.back();
}

VastBuilder& VastBuilder::text(std::string element, std::string text) {
  lastAd().texts.emplace_back(std::move(element), std::move(text));
  return *this;
}

std::string VastBuilder::trackingEvents(const Texts& tracking) {
  if (tracking.empty()) return {};
  std::string xml = "<TrackingEvents>";
  for (const auto& [event, url] : tracking) {
    xml += "<Tracking" + attribute("event", std::string_view(event)) + ">" + cdata(url) +
           "</Tracking>";
  }
  return xml + "</TrackingEvents>";
}

std::string VastBuilder::creatives(const Ad& ad) {
  if (ad.creatives.empty() && ad.companions.empty()) return {};
  std::string xml = "<Creatives>";
  for (const Creative& creative : ad.creatives) {
    xml += "<Creative" + attribute("id", creative.id);
    if (creative.sequence) xml += attribute("sequence", *creative.sequence);
    xml += ">";
    if (creative.universalAdId) {
      const auto& [registry, value] = *creative.universalAdId;
      xml += "<UniversalAdId" + attribute("idRegistry", std::string_view(registry)) + ">" +
             cdata(value) + "</UniversalAdId>";
    }
    xml += "<Linear>" + trackingEvents(creative.tracking) + "</Linear></Creative>";
  }
  if (!ad.companions.empty()) {
    xml += "<Creative><CompanionAds>";
    for (const Companion& companion : ad.companions) {
      xml += "<Companion" + attribute("width", companion.width) +
             attribute("height", companion.height) +
             attribute("apiFramework", companion.apiFramework) + "><StaticResource>" +
             cdata(companion.resourceURL) + "</StaticResource>" +
             trackingEvents(companion.tracking) + "</Companion>";
    }
    xml += "</CompanionAds></Creative>";
  }
  return xml + "</Creatives>";
}

}  // namespace xel::simulation
