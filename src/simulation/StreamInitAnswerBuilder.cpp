#include "xel/simulation/StreamInitAnswerBuilder.h"

#include <string_view>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "xel/display/XELVideoDisplay.h"

#include "simulation/JSONNumber.h"

namespace xel::simulation {
namespace {

void add(boost::json::object& object, std::string_view name,
         const std::optional<std::string>& text) {
  if (text) object.emplace(boost::json::string_view(name.data(), name.size()), *text);
}

}  // namespace

StreamInitAnswerBuilder StreamInitAnswerBuilder::live() {
  StreamInitAnswerBuilder answer;
  answer.type = "live";
  answer.id3EventsURL = "https://ads.example/live.json";
  return answer;
}

StreamInitAnswerBuilder StreamInitAnswerBuilder::vod() {
  StreamInitAnswerBuilder answer;
  answer.type = "on_demand";
  answer.timeEventsURL = "https://ads.example/vod.json";
  return answer;
}

std::string StreamInitAnswerBuilder::build() const {
  boost::json::object answer;
  add(answer, "stream_id", streamID);
  add(answer, "stream_manifest", manifest);
  add(answer, "stream_type", type);
  if (!subtitles.empty()) {
    boost::json::array tracks;
    for (const SubtitleTrack& subtitle : subtitles) {
      boost::json::object track;
      add(track, kXELSubtitleLanguage, subtitle.language);
      add(track, kXELSubtitleWebVTT, subtitle.webvtt);
      add(track, kXELSubtitleTTML, subtitle.ttml);
      tracks.push_back(std::move(track));
    }
    answer["subtitles"] = std::move(tracks);
  }
  add(answer, "id3_events_url", id3EventsURL);
  if (pollingFrequency) answer["polling_frequency"] = jsonNumber(*pollingFrequency);
  add(answer, "preroll_manifest", prerollManifest);
  add(answer, "time_events_url", timeEventsURL);
  return boost::json::serialize(answer);
}

}  // namespace xel::simulation
