#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>

#include "inspect/ClientPlatform.h"
#include "inspect/ClientRuns.h"

namespace xel::inspect {
namespace {

constexpr std::array<std::string_view, 5> events = {"start", "firstquartile", "midpoint",
                                                    "thirdquartile", "complete"};

std::string quoted(std::string_view text) {
  return boost::json::serialize(boost::json::string_view(text.data(), text.size()));
}

/// A live document with nothing but this ad, its break, and a tag for each event.
std::string documentWith(const StreamDocument::Ad& ad, const JSONValue& json) {
  const auto adBreak = json["breaks"][ad.breakKey];
  std::string document =
      "{\"ads\":{" + quoted(ad.key) + ':' + json["ads"][ad.key].serialize() + '}';
  if (adBreak) document += ",\"breaks\":{" + quoted(ad.breakKey) + ':' + adBreak.serialize() + '}';
  document += ",\"tags\":{";
  for (const auto event : events) {
    if (event != events.front()) document += ',';
    document += quoted(event) + ":{\"type\":" + quoted(event) + ",\"ad\":" + quoted(ad.key) + '}';
  }
  return document + "}}";
}

AdView viewOf(const ClientPlatform& platform) {
  const ClientSession session(platform);
  AdView view;
  for (const auto event : events) {
    session.display->reportTXXX(event);
    platform.loop().runUntilIdle();
  }
  for (const auto& heard : session.delegate->events()) {
    if (heard.name == "adDidStart") view.ad = heard.ad;
  }
  return view;
}

}  // namespace

std::vector<AdView> runAds(const JSONValue& json, const StreamDocument& document,
                           const ClientFacts& facts) {
  const ClientPlatform platform(facts);
  const auto answer = simulation::StreamInitAnswerBuilder::live();
  std::vector<AdView> views;
  for (const auto& ad : document.ads) {
    platform.answerNext(answer.build());
    platform.server().answer(*answer.id3EventsURL, {200, documentWith(ad, json)});
    const auto& requests = platform.server().requests();
    auto sent = requests.size();
    views.push_back(viewOf(platform));
    for (; sent < requests.size(); ++sent) {
      const auto& request = requests[sent].request;
      if (!request.trackingEvent) continue;
      views.back().pings.push_back({*request.trackingEvent, request.url, request.refusal()});
    }
  }
  return views;
}

}  // namespace xel::inspect
