#include "xel/simulation/StreamInfoBuilder.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "xel/simulation/VastBuilder.h"

#include "simulation/JSONNumber.h"

namespace xel::simulation {

StreamInfoBuilder StreamInfoBuilder::vod() { return StreamInfoBuilder(false); }
StreamInfoBuilder StreamInfoBuilder::live() { return StreamInfoBuilder(true); }

StreamInfoBuilder& StreamInfoBuilder::addBreak(std::string key, double start) {
  breaks_.push_back({std::move(key), start, {}});
  return *this;
}

StreamInfoBuilder& StreamInfoBuilder::addAd(std::string key, double duration) {
  std::string vast = VastBuilder::typical(key).build();
  return addAd(std::move(key), duration, std::move(vast));
}

StreamInfoBuilder& StreamInfoBuilder::addAd(std::string key, double duration, std::string vast) {
  if (breaks_.empty()) addBreak("break-1", 0);
  breaks_.back().ads.push_back({std::move(key), duration, std::move(vast)});
  return *this;
}

std::vector<StreamInfoBuilder::Event> StreamInfoBuilder::events() const {
  std::vector<Event> events;
  for (const Break& adBreak : breaks_) {
    double start = adBreak.start;
    for (const Ad& ad : adBreak.ads) {
      addEvents(ad, start, events);
      start += ad.duration;
    }
  }
  return events;
}

std::string StreamInfoBuilder::build() const {
  namespace json = boost::json;
  json::object ads, breaks, tags, times;
  json::array cuepoints;
  for (const Break& adBreak : breaks_) {
    std::int64_t position = 0;
    for (const Ad& ad : adBreak.ads) {
      ads[ad.key] = {{"break", adBreak.key},
                     {"vast", ad.vast},
                     {"position", ++position},
                     {"duration", jsonNumber(ad.duration)}};
    }
    breaks[adBreak.key] = {{"ads", position}, {"duration", jsonNumber(adBreak.duration())}};
    cuepoints.push_back({{"start", jsonNumber(adBreak.start)},
                         {"end", jsonNumber(adBreak.start + adBreak.duration())}});
  }
  for (const Event& event : events()) {
    json::object entry = {{"type", event.type}, {"ad", event.adKey}};
    if (live_) {
      tags[event.text] = std::move(entry);
    } else {
      json::value& second = times[std::to_string(static_cast<std::int64_t>(event.time))];
      if (second.is_null()) second.emplace_array();
      second.get_array().push_back(std::move(entry));
    }
  }

  json::object document = {{"ads", std::move(ads)}, {"breaks", std::move(breaks)}};
  if (live_) {
    document["tags"] = std::move(tags);
  } else {
    document["times"] = std::move(times);
    document["cuepoints"] = std::move(cuepoints);
  }
  return json::serialize(document);
}

double StreamInfoBuilder::Break::duration() const {
  double sum = 0;
  for (const Ad& ad : ads) sum += ad.duration;
  return sum;
}

void StreamInfoBuilder::addEvents(const Ad& ad, double start, std::vector<Event>& events) const {
  const double end = start + ad.duration;
  const double first = live_ ? start : std::ceil(start);
  const double last =
      live_ ? end - std::min(0.1, ad.duration / 10) : std::max(first, std::ceil(end) - 1);
  const auto add = [&](const char* type, double time) {
    events.push_back({time, type, ad.key, live_ ? ad.key + "," + type : std::string()});
  };
  const auto quartile = [&](double share) {
    const double time = start + share * ad.duration;
    return live_ ? time : std::clamp(std::floor(time), first, last);
  };
  add("start", first);
  add("firstquartile", quartile(0.25));
  add("midpoint", quartile(0.5));
  add("thirdquartile", quartile(0.75));
  add("complete", last);
}

}  // namespace xel::simulation
