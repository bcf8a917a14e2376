#include "serve/ServedStream.h"

#include <algorithm>
#include <utility>

#include "xel/simulation/StreamInitAnswerBuilder.h"
#include "xel/simulation/VastBuilder.h"

#include "serve/Placeholder.h"

namespace xel::serve {
namespace {

constexpr std::size_t firstSegments = 3;
constexpr std::size_t windowSegments = 6;
/// How far a live document is ahead of the playlist.
constexpr double documentLead = 20;
/// How far the playlist must stay behind the document, so that a player has read the document when
/// it gets to the segment.
constexpr double playlistLag = 2 * PlaylistWriter::segmentSeconds;

/// Playlists and their media, below a session's URL.
constexpr const char* mainName = "main";
constexpr const char* prerollName = "preroll";

StreamPlan planOf(const ServedStream::Settings& settings) {
  return settings.media ? mediaPlan(settings.kind, settings.liveDuration)
                        : namedPlan(settings.kind, settings.liveDuration);
}

}  // namespace

ServedStream::ServedStream(Settings settings)
    : settings_(std::move(settings)), plan_(planOf(settings_)), mainPlaylist_(mainPlaylist()) {
  if (!settings_.media) return;
  mainMedia_.emplace(settings_.media, plan_, settings_.kind == StreamKind::live);
  if (settings_.preroll) prerollMedia_.emplace(settings_.media, prerollPlan(), false);
}

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
  const double published = mainMedia_ ? mainMedia_->publishedUntil(settings_.now())
                                      : static_cast<double>(std::max(published_, firstSegments)) *
                                            PlaylistWriter::segmentSeconds;
  fetchedCover_ = published + documentLead;
  lastDocument_ = settings_.document
                      ? filledIn(settings_.document->text, "{tracking}", settings_.trackingURL)
                      : builder().build();
  return lastDocument_;
}

void ServedStream::documentSent() {
  covered_ = fetchedCover_;
  sentDocument_ = lastDocument_;
}

void ServedStream::documentLost() {
  fetchDocument();
  covered_ = fetchedCover_;
}

bool ServedStream::isNextSegmentDue() const {
  const bool keepsStep = settings_.kind == StreamKind::live && !settings_.document && !mainMedia_;
  if (!keepsStep || lastDocument_.empty()) return true;
  return static_cast<double>(nextPublished()) * PlaylistWriter::segmentSeconds + playlistLag <=
         covered_;
}

std::string ServedStream::fetchPlaylist() {
  if (mainMedia_) return MediaStream::masterPlaylist(mainName);
  if (settings_.kind == StreamKind::vod) return mainPlaylist_.wholePlaylist();
  published_ = nextPublished();
  return mainPlaylist_.playlist(published_ - std::min(published_, windowSegments), published_);
}

std::string ServedStream::prerollPlaylist() const {
  if (!settings_.preroll) return {};
  if (prerollMedia_) return MediaStream::masterPlaylist(prerollName);
  return PlaylistWriter(prerollPlan().duration, textsOf(prerollPlan())).wholePlaylist();
}

MediaStream* ServedStream::media(const std::string& name) {
  auto& media = name == prerollName ? prerollMedia_ : mainMedia_;
  return media ? &*media : nullptr;
}

simulation::StreamInfoBuilder ServedStream::builder() const {
  if (settings_.kind == StreamKind::vod) {
    auto builder = simulation::StreamInfoBuilder::vod();
    for (const PlannedBreak& planned : plan_.breaks) addBreak(planned, builder);
    return builder;
  }
  auto builder = simulation::StreamInfoBuilder::live();
  if (settings_.preroll) addBreak(prerollPlan().breaks[0], builder);
  for (const PlannedBreak& planned : plan_.breaks) {
    if (planned.start < fetchedCover_) addBreak(planned, builder);
  }
  return builder;
}

void ServedStream::addBreak(const PlannedBreak& planned,
                            simulation::StreamInfoBuilder& builder) const {
  const auto& domains = settings_.measurementDomains;
  builder.addBreak(planned.key, planned.start);
  for (std::size_t i = 0; i < planned.adDurations.size(); ++i) {
    const std::string key = adKey(planned, i);
    const std::string base = settings_.trackingURL + "/" + key;
    auto vast = simulation::VastBuilder::typical(key, settings_.trackingURL);
    vast.impression(base + "/pagead/adview?ai=1&sigh=2&version=[SDKV]&from=" + domains[0])
        .creativeTracking("complete", base + "/pcs/view?xai=1&sig=2&from=" + domains[1]);
    builder.addAd(key, planned.adDurations[i], vast.build());
  }
}

PlaylistWriter ServedStream::mainPlaylist() const {
  if (settings_.document) {
    return settings_.kind == StreamKind::vod ? vodPlaylistFor(settings_.document->value)
                                             : livePlaylistFor(settings_.document->value);
  }
  if (settings_.kind == StreamKind::vod) return {plan_.duration, {}};
  return {plan_.duration, textsOf(plan_)};
}

std::size_t ServedStream::nextPublished() const {
  return std::min(std::max(published_ + 1, firstSegments), mainPlaylist_.segmentCount());
}

}  // namespace xel::serve
