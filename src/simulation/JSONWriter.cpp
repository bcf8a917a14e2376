#include "xel/simulation/JSONWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include <boost/json/serialize.hpp>

#include "simulation/UTF8.h"

namespace xel::simulation {
namespace {

/// Most of a session's texts need no escapes, and long sessions have millions of them.
bool isPlain(char c) { return c >= ' ' && c < '\x7F' && c != '"' && c != '\\'; }

/// JSON lets the controls from U+007F to U+009F stand as they are, and terminals obey them.
std::string withControlsEscaped(std::string_view json) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string escaped;
  for (std::size_t i = 0; i < json.size(); ++i) {
    const bool isPair =
        json[i] == '\xC2' && i + 1 < json.size() && static_cast<unsigned char>(json[i + 1]) < 0xA0;
    if (isPair) ++i;
    if (isPair || json[i] == '\x7F') {
      const auto byte = static_cast<unsigned char>(json[i]);
      escaped += "\\u00";
      escaped += digits[byte >> 4];
      escaped += digits[byte & 15];
    } else {
      escaped += json[i];
    }
  }
  return escaped;
}

}  // namespace

JSONWriter& JSONWriter::name(std::string_view name) {
  separate();
  quote(name);
  text_ += ':';
  return *this;
}

JSONWriter& JSONWriter::write(std::string_view text, TextKind kind) {
  separate();
  quote(filtered(text, kind));
  return *this;
}

JSONWriter& JSONWriter::keyword(std::string_view text) {
  separate();
  quote(text);
  return *this;
}

JSONWriter& JSONWriter::value(double number) {
  if (!std::isfinite(number)) return value(nullptr);
  if (number == 0 && std::signbit(number)) return raw("-0.0");
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  return raw({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

JSONWriter& JSONWriter::value(const JSONValue& json) {
  if (json.isObject()) {
    beginObject();
    json.forEachMember([this](std::string_view key, const JSONValue& keyValue) {
      member(filtered(key), keyValue);
    });
    return endObject();
  }
  if (const auto elements = json.elements(); !elements.empty()) return value(elements);
  if (const auto text = json.text()) return value(*text);
  const auto serialized = json.serialize();
  const bool isFraction = serialized.find_first_of(".eE") != std::string::npos;
  if (const auto number = json.number(); number && isFraction) return value(*number);
  return raw(serialized);
}

JSONWriter& JSONWriter::value(const Error& error) {
  return beginObject()
      .member("domain", error.domain)
      .member("code", error.code)
      .member("description", error.description)
      .member("underlying", error.underlying)
      .endObject();
}

JSONWriter& JSONWriter::value(const XELCuepoint& cuepoint) {
  return beginObject()
      .member("startTime", cuepoint.startTime())
      .member("endTime", cuepoint.endTime())
      .member("isPlayed", cuepoint.isPlayed())
      .endObject();
}

JSONWriter& JSONWriter::value(const XELAdBreakInfo& info) {
  return beginObject()
      .member("adBreakKey", info.adBreakKey())
      .member("totalAds", info.totalAds())
      .member("duration", info.duration())
      .member("adBreakIndex", info.adBreakIndex())
      .member("timeOffset", info.timeOffset())
      .endObject();
}

JSONWriter& JSONWriter::value(const XELCreative& creative) {
  return beginObject()
      .member("isLinear", creative.isLinear())
      .member("adID", creative.adID())
      .member("universalAdIdValue", creative.universalAdIdValue())
      .member("universalAdIdRegistry", creative.universalAdIdRegistry())
      .member("sequence", creative.sequence())
      .member("trackingURLs", creative.trackingURLs())
      .endObject();
}

JSONWriter& JSONWriter::value(const XELCompanion& companion) {
  return beginObject()
      .name("staticResourceURL")
      .url(companion.staticResourceURL())
      .member("apiFramework", companion.apiFramework())
      .member("width", companion.width())
      .member("height", companion.height())
      .member("trackingURLs", companion.trackingURLs())
      .endObject();
}

JSONWriter& JSONWriter::value(const TrackingURLs& trackingURLs) {
  beginObject();
  for (const auto& [event, urls] : trackingURLs) {
    name(filtered(event)).beginArray();
    for (const auto& each : urls) url(each);
    endArray();
  }
  return endObject();
}

JSONWriter& JSONWriter::value(const XELAd& ad) {
  const auto& creatives = ad.creatives();
  const auto selected = std::find(creatives.begin(), creatives.end(), ad.selectedCreative());
  std::optional<std::ptrdiff_t> selectedIndex;
  if (selected != creatives.end()) selectedIndex = selected - creatives.begin();
  return beginObject()
      .member("adKey", ad.adKey())
      .member("adID", ad.adID())
      .member("adTitle", ad.adTitle())
      .member("adSystem", ad.adSystem())
      .member("adDescription", ad.adDescription())
      .member("duration", ad.duration())
      .member("adPosition", ad.adPosition())
      .member("adStartTime", ad.adStartTime())
      .member("adBreakInfo", ad.adBreakInfo())
      .member("creatives", creatives)
      .member("companions", ad.companions())
      .member("trackingURLs", ad.trackingURLs())
      .member("selectedCreative", selectedIndex)
      .endObject();
}

JSONWriter& JSONWriter::begin(char bracket) {
  separate();
  text_ += bracket;
  return *this;
}

JSONWriter& JSONWriter::end(char bracket) {
  text_ += bracket;
  return *this;
}

JSONWriter& JSONWriter::raw(std::string_view json) {
  separate();
  text_ += json;
  return *this;
}

void JSONWriter::separate() {
  if (!text_.empty() && std::string_view("{[:").find(text_.back()) == std::string_view::npos) {
    text_ += ',';
  }
}

void JSONWriter::quote(std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isPlain)) {
    text_.append(1, '"').append(text).append(1, '"');
  } else {
    text_ +=
        withControlsEscaped(boost::json::serialize(boost::json::string_view(withValidUTF8(text))));
  }
}

}  // namespace xel::simulation
