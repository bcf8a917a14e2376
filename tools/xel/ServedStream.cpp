#include "ServedStream.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "xel/platform/Platform.h"
#include "xel/simulation/StreamInitAnswerBuilder.h"
#include "xel/simulation/VastBuilder.h"

namespace xel::serve {
namespace {

constexpr double vodDuration = 120;
constexpr std::size_t firstSegments = 3;
constexpr std::size_t windowSegments = 6;
/// How far a live document is ahead of the playlist.
constexpr double documentLead = 20;
/// How far the playlist must stay behind the document, so that a player has read the document when
/// it gets to the segment.
constexpr double playlistLag = 2 * PlaylistWriter::segmentSeconds;

double durationOf(const PlannedBreak& planned) {
  return std::accumulate(planned.adDurations.begin(), planned.adDurations.end(), 0.0);
}

const PlannedBreak& prerollBreak() {
  static const PlannedBreak preroll = {"preroll", 0, {4, 5}};
  return preroll;
}

std::vector<PlannedBreak> planBreaks(const ServedStream::Settings& settings) {
  if (settings.kind == StreamKind::vod) {
    return {{"break-1", 10, {8, 10, 6.5}}, {"break-2", 60, {15, 10}}};
  }
  std::vector<PlannedBreak> breaks;
  for (double start = 10;; start += 30) {
    PlannedBreak next = {"break-" + std::to_string(breaks.size() + 1), start, {4, 6, 5.5}};
    if (start + durationOf(next) > settings.liveDuration) return breaks;
    breaks.push_back(std::move(next));
  }
}

}  // namespace

ServedStream::ServedStream(Settings settings)
    : settings_(std::move(settings)),
      breaks_(planBreaks(settings_)),
      mainPlaylist_(mainPlaylist()) {}

std::string ServedStream::answer() const {
  simulation::StreamInitAnswerBuilder answer;
  answer.streamID = settings_.streamID;
  answer.manifest = settings_.url + "/main.m3u8";
  answer.subtitles = {{"en", settings_.url + "/en.vtt", std::nullopt}};
  const std::string document = settings_.url + "/events.json";
  if (settings_.kind == StreamKind::live) {
    answer.type = "live";
    answer.id3EventsURL = document;
    answer.pollingFrequency = pollingPeriod;
    if (settings_.preroll) answer.prerollManifest = settings_.url + "/preroll.m3u8";
  } else {
    answer.type = "on_demand";
    answer.timeEventsURL = document;
  }
  return answer.build();
}

const std::string& ServedStream::fetchDocument() {
  fetchedCover_ =
      static_cast<double>(std::max(published_, firstSegments)) * PlaylistWriter::segmentSeconds +
      documentLead;
  lastDocument_ = settings_.document ? settings_.document->text : builder().build();
  return lastDocument_;
}

bool ServedStream::isNextSegmentDue() const {
  if (settings_.kind == StreamKind::vod || settings_.document || lastDocument_.empty()) return true;
  return static_cast<double>(nextPublished()) * PlaylistWriter::segmentSeconds + playlistLag <=
         covered_;
}

std::string ServedStream::fetchPlaylist() {
  if (settings_.kind == StreamKind::vod) return mainPlaylist_.wholePlaylist();
  published_ = nextPublished();
  return mainPlaylist_.playlist(published_ - std::min(published_, windowSegments), published_);
}

std::string ServedStream::prerollPlaylist() const {
  if (!settings_.preroll) return {};
  return playlist({prerollBreak()}, durationOf(prerollBreak())).wholePlaylist();
}

simulation::StreamInfoBuilder ServedStream::builder() const {
  if (settings_.kind == StreamKind::vod) {
    auto builder = simulation::StreamInfoBuilder::vod();
    for (const PlannedBreak& planned : breaks_) addBreak(planned, builder);
    return builder;
  }
  auto builder = simulation::StreamInfoBuilder::live();
  if (settings_.preroll) addBreak(prerollBreak(), builder);
  for (const PlannedBreak& planned : breaks_) {
    if (planned.start < fetchedCover_) addBreak(planned, builder);
  }
  return builder;
}

void ServedStream::addBreak(const PlannedBreak& planned,
                            simulation::StreamInfoBuilder& builder) const {
  const auto& domains = Services().measurementDomains;
  builder.addBreak(planned.key, planned.start);
  for (std::size_t i = 0; i < planned.adDurations.size(); ++i) {
    const std::string key = planned.key + "-ad-" + std::to_string(i + 1);
    const std::string base = settings_.trackingURL + "/" + key;
    auto vast = simulation::VastBuilder::typical(key, settings_.trackingURL);
    vast.impression(base + "/pagead/adview?ai=1&sigh=2&version=[SDKV]&from=" + domains[0])
        .creativeTracking("complete", base + "/pcs/view?xai=1&sig=2&from=" + domains[1]);
    builder.addAd(key, planned.adDurations[i], vast.build());
  }
}

PlaylistWriter ServedStream::mainPlaylist() const {
  if (settings_.kind == StreamKind::vod) {
    return settings_.document ? vodPlaylistFor(settings_.document->value)
                              : PlaylistWriter(vodDuration, {});
  }
  return settings_.document ? livePlaylistFor(settings_.document->value)
                            : playlist(breaks_, settings_.liveDuration);
}

PlaylistWriter ServedStream::playlist(const std::vector<PlannedBreak>& breaks,
                                      double duration) const {
  auto builder = simulation::StreamInfoBuilder::live();
  for (const PlannedBreak& planned : breaks) addBreak(planned, builder);
  std::vector<StreamText> texts;
  for (auto& event : builder.events()) texts.push_back({event.time, std::move(event.text)});
  return {duration, std::move(texts)};
}

std::size_t ServedStream::nextPublished() const {
  return std::min(std::max(published_ + 1, firstSegments), mainPlaylist_.segmentCount());
}

}  // namespace xel::serve
