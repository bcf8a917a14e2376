#include "serve/PromisedPings.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "serve/VastPings.h"

namespace xel::serve {
namespace {

/// In the order in which they happen; of any other event a document has nothing to say.
constexpr std::array<std::string_view, 6> events = {"start",    "creativeview",  "firstquartile",
                                                    "midpoint", "thirdquartile", "complete"};

using EventsOfAds = std::map<std::string, std::set<std::string>, std::less<>>;

void addEvent(const JSONValue& entry, EventsOfAds& found) {
  const auto ad = entry["ad"].text();
  std::string type(entry["type"].text().value_or(""));
  std::transform(type.begin(), type.end(), type.begin(),
                 [](unsigned char character) { return std::tolower(character); });
  if (!ad || std::find(events.begin(), events.end(), type) == events.end()) return;
  auto& ofAd = found[std::string(*ad)];
  // The picture appears when the ad starts; a document never says so.
  if (type == "start") ofAd.emplace("creativeview");
  ofAd.insert(std::move(type));
}

EventsOfAds eventsOf(const JSONValue& document) {
  EventsOfAds found;
  document["times"].forEachMember([&](std::string_view, const JSONValue& second) {
    for (const JSONValue& entry : second.elements()) addEvent(entry, found);
  });
  document["tags"].forEachMember(
      [&](std::string_view, const JSONValue& entry) { addEvent(entry, found); });
  return found;
}

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool isMeasurement(std::string_view url, const PingSender& sender) {
  const auto& domains = sender.measurementDomains;
  if (std::none_of(domains.begin(), domains.end(), [url](const std::string& domain) {
        return !domain.empty() && contains(url, domain);
      })) {
    return false;
  }
  for (const auto path : {"/pagead/conversion", "/kolpad/live/conversion", "/pagead/adview"}) {
    if (contains(url, path)) return contains(url, "ai=") && contains(url, "sigh=");
  }
  return contains(url, "/pcs/view") && contains(url, "xai=") && contains(url, "sig=");
}

std::vector<std::string_view> piecesOf(std::string_view query) {
  std::vector<std::string_view> pieces;
  while (!query.empty()) {
    const auto end = std::min(query.find('&'), query.size());
    pieces.push_back(query.substr(0, end));
    query.remove_prefix(std::min(end + 1, query.size()));
  }
  return pieces;
}

/// The query as a measurement URL has it: each name once, with the client's own.
std::string measurementQuery(std::string_view query, const PingSender& sender) {
  std::map<std::string_view, std::string_view> items;
  for (const auto piece : piecesOf(query)) {
    const auto equals = piece.find('=');
    if (equals == std::string_view::npos || equals != piece.rfind('=')) continue;
    items[piece.substr(0, equals)] = piece.substr(equals + 1);
  }
  items["sdkv"] = sender.version;
  items["ssss"] = "oxel";
  std::string written;
  for (const auto& [name, value] : items) {
    if (!written.empty()) written += '&';
    written.append(name).append("=").append(value);
  }
  return written;
}

/// What the server should see of a tracking URL; absent when it goes elsewhere.
std::optional<std::string> targetOf(std::string url, const PingSender& sender) {
  constexpr std::string_view macro = "[SDKV]";
  const auto version = sender.version.substr(0, sender.version.find('/'));
  for (auto at = url.find(macro); at != std::string::npos; at = url.find(macro, at)) {
    url.replace(at, macro.size(), version);
  }
  if (!url.starts_with(sender.server + "/")) return std::nullopt;
  auto target = url.substr(sender.server.size());
  target.resize(std::min(target.find('#'), target.size()));
  const auto question = target.find('?');
  if (question == std::string::npos || !isMeasurement(url, sender)) return comparableTarget(target);
  return comparableTarget(target.substr(0, question + 1) +
                          measurementQuery(std::string_view(target).substr(question + 1), sender));
}

std::string decoded(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned value = 0;
    const auto* digits = text.data() + i + 1;
    if (text[i] == '%' && i + 2 < text.size() &&
        std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
      plain += static_cast<char>(value);
      i += 2;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

}  // namespace

Promise promiseOf(const JSONValue& document, const PingSender& sender) {
  Promise promise;
  document["breaks"].forEachMember([&](std::string_view, const JSONValue& adBreak) {
    const auto ads = adBreak["ads"].integer().value_or(0);
    promise.held += static_cast<std::size_t>(std::max<std::int64_t>(ads, 0));
  });
  const auto found = eventsOf(document);
  document["ads"].forEachMember([&](std::string_view key, const JSONValue& ad) {
    const auto ofAd = found.find(key);
    if (ofAd == found.end()) return;
    promise.started += ofAd->second.count("start");
    const auto pings = vastPings(std::string(ad["vast"].text().value_or("")));
    for (const auto event : events) {
      const std::string name(event);
      const auto urls = pings.find(name);
      if (ofAd->second.count(name) == 0 || urls == pings.end()) continue;
      for (const auto& url : urls->second) {
        if (auto target = targetOf(url, sender)) {
          promise.pings.push_back({std::string(key), name, std::move(*target)});
        } else {
          ++promise.elsewhere;
        }
      }
    }
  });
  return promise;
}

std::string comparableTarget(std::string_view target) {
  const auto question = std::min(target.find('?'), target.size());
  auto comparable = decoded(target.substr(0, question));
  std::vector<std::string> pieces;
  for (const auto piece : piecesOf(target.substr(std::min(question + 1, target.size())))) {
    pieces.push_back(decoded(piece));
  }
  std::sort(pieces.begin(), pieces.end());
  for (const auto& piece : pieces) comparable += (&piece == &pieces.front() ? '?' : '&') + piece;
  return comparable;
}

}  // namespace xel::serve
