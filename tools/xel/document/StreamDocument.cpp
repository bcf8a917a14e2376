#include "document/StreamDocument.h"

#include <algorithm>
#include <charconv>

#include "common/Lowercased.h"
#include "document/JSONPath.h"

namespace xel {
namespace {

std::string textOf(const JSONValue& value) { return std::string(value.text().value_or("")); }

/// The whole number, if the text is what the library would write for it.
std::optional<std::int64_t> secondFrom(std::string_view text) {
  std::int64_t second = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), second);
  if (error != std::errc{} || std::string_view(text.data(), end) != text) return std::nullopt;
  if (std::to_string(second) != text) return std::nullopt;
  return second;
}

StreamDocument::Event eventFrom(const JSONValue& event, std::string path) {
  return {std::move(path), lowercased(textOf(event["type"])), textOf(event["ad"])};
}

StreamDocument::Ad adFrom(std::string_view key, const JSONValue& ad) {
  const auto vast = ad["vast"].text();
  return {std::string(key),
          memberPath("$.ads", key),
          textOf(ad["break"]),
          ad["position"].integer(),
          ad["duration"].number(),
          vast ? std::optional<std::string>(*vast) : std::nullopt,
          {}};
}

}  // namespace

StreamDocument StreamDocument::read(const JSONValue& document) {
  StreamDocument result;
  document["ads"].forEachMember([&](std::string_view key, const JSONValue& ad) {
    result.adIndexes_.emplace(key, result.ads.size());
    result.ads.push_back(adFrom(key, ad));
  });
  result.readBreaks(document);
  result.readSeconds(document);
  document["tags"].forEachMember([&](std::string_view text, const JSONValue& tag) {
    result.tags.push_back({std::string(text), eventFrom(tag, memberPath("$.tags", text))});
  });
  const auto cuepoints = document["cuepoints"].elements();
  for (std::size_t i = 0; i < cuepoints.size(); ++i) {
    result.cuepoints.push_back({elementPath("$.cuepoints", i), cuepoints[i]["start"].number(),
                                cuepoints[i]["end"].number()});
  }
  const bool hasTimes = document["times"].isObject();
  const bool hasTags = document["tags"].isObject();
  if (!result.seconds.empty() || (hasTimes && result.tags.empty())) {
    result.kind = Kind::onDemand;
  } else if (hasTags) {
    result.kind = Kind::live;
  }
  result.findStarts();
  return result;
}

const StreamDocument::Ad* StreamDocument::adWithKey(std::string_view key) const {
  const auto found = adIndexes_.find(key);
  return found == adIndexes_.end() ? nullptr : &ads[found->second];
}

void StreamDocument::readBreaks(const JSONValue& document) {
  std::map<std::string, std::size_t, std::less<>> indexes;
  document["breaks"].forEachMember([&](std::string_view key, const JSONValue& value) {
    indexes.emplace(key, breaks.size());
    breaks.push_back({std::string(key),
                      memberPath("$.breaks", key),
                      value["ads"].integer(),
                      value["duration"].number(),
                      {},
                      {}});
  });
  for (std::size_t i = 0; i < ads.size(); ++i) {
    const auto [entry, isNew] = indexes.emplace(ads[i].breakKey, breaks.size());
    if (isNew) breaks.push_back({ads[i].breakKey, {}, {}, {}, {}, {}});
    breaks[entry->second].ads.push_back(i);
  }
}

void StreamDocument::readSeconds(const JSONValue& document) {
  document["times"].forEachMember([&](std::string_view key, const JSONValue& value) {
    Second second{std::string(key), memberPath("$.times", key), secondFrom(key), {}};
    const auto events = value.elements();
    for (std::size_t i = 0; i < events.size(); ++i) {
      second.events.push_back(eventFrom(events[i], elementPath(second.path, i)));
    }
    seconds.push_back(std::move(second));
  });
  std::stable_sort(seconds.begin(), seconds.end(), [](const Second& a, const Second& b) {
    return a.second && (!b.second || *a.second < *b.second);
  });
}

void StreamDocument::findStarts() {
  for (const auto& second : seconds) {
    if (!second.second || *second.second < 0) continue;
    for (const auto& event : second.events) {
      const auto found = adIndexes_.find(event.adKey);
      if (event.type != "start" || found == adIndexes_.end()) continue;
      auto& start = ads[found->second].start;
      if (!start) start = static_cast<double>(*second.second);
    }
  }
  for (auto& adBreak : breaks) {
    for (const auto index : adBreak.ads) {
      const auto& start = ads[index].start;
      if (start && (!adBreak.start || *start < *adBreak.start)) adBreak.start = start;
    }
  }
}

}  // namespace xel
