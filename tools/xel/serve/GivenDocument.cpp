#include "serve/GivenDocument.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>
#include <vector>

namespace xel::serve {
namespace {

constexpr double secondsAfterLastEvent = 10;
constexpr double longestStream = 24 * 3600;

PlaylistWriter withTail(double lastEvent, std::vector<StreamText> texts) {
  return {std::clamp(lastEvent, 0.0, longestStream) + secondsAfterLastEvent, std::move(texts)};
}

}  // namespace

PlaylistWriter vodPlaylistFor(const JSONValue& streamInfo) {
  double last = 0;
  for (const JSONValue& cuepoint : streamInfo["cuepoints"].elements()) {
    last = std::max(last, cuepoint["end"].number().value_or(0));
  }
  streamInfo["times"].forEachMember([&](std::string_view name, const JSONValue&) {
    double second = 0;
    std::from_chars(name.data(), name.data() + name.size(), second);
    last = std::max(last, second);
  });
  return withTail(last, {});
}

PlaylistWriter livePlaylistFor(const JSONValue& streamInfo) {
  std::vector<StreamText> texts;
  streamInfo["tags"].forEachMember([&](std::string_view name, const JSONValue&) {
    texts.push_back({static_cast<double>(texts.size()) + 1, std::string(name)});
  });
  const auto last = static_cast<double>(texts.size());
  return withTail(last, std::move(texts));
}

}  // namespace xel::serve
