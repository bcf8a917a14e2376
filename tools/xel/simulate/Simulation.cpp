#include "simulate/Simulation.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELVODStreamRequest.h"

#include "common/PrintableText.h"
#include "simulate/DocumentWatch.h"

namespace xel::simulate {
namespace {

constexpr auto streamName = "simulated";
constexpr auto documentURL = "https://ads.example/document.json";

Services servicesWith(const std::array<std::string, 2>& measurementDomains) {
  Services services;
  services.measurementDomains = measurementDomains;
  return services;
}

/// The event's name in documents, of a call to the host; empty for other calls.
std::string_view documentType(const std::string& call) {
  if (call == "adDidStart") return "start";
  if (call == "adDidCrossFirstQuartile") return "firstquartile";
  if (call == "adDidCrossMidpoint") return "midpoint";
  if (call == "adDidCrossThirdQuartile") return "thirdquartile";
  return call == "adDidComplete" ? "complete" : "";
}

PlayEvent playEvent(const simulation::RecordingDelegate::Event& event) {
  if (event.name == StreamInitialized::name) return StreamInitialized{event.streamID};
  if (event.name == ErrorReceived::name) return ErrorReceived{event.error};
  if (event.name == ReadyForPlayback::name) return ReadyForPlayback{};
  if (event.name == AdCountdown::name) return AdCountdown{event.ad, event.remaining};
  if (event.name == CuepointsUpdated::name) return CuepointsUpdated{event.cuepoints};
  if (event.adBreakInfo) return BreakEvent{event.name, event.adBreakInfo};
  return AdEvent{event.name, event.ad};
}

}  // namespace

Simulation::Simulation(const std::string& document, SimulationSettings settings,
                       SimulationView& view)
    : settings_(std::move(settings)),
      view_(view),
      events_(settings_.isLive),
      platform_(servicesWith(settings_.measurementDomains)),
      watched_([this] {
        auto platform = Platform::current();
        platform.http = std::make_shared<DocumentWatch>(
            platform.http, documentURL,
            DocumentWatch::Observer{
                [this](const HTTPRequest& ping) {
                  show(PingSent{*ping.trackingEvent, ping.url});
                },
                [this](const JSONValue& arrived) {
                  events_.documentArrived(StreamDocument::read(arrived));
                  remark("document", "arrived");
                },
                [this](const std::string& problem) { remark("document", problem); }});
        return platform;
      }()),
      display_(std::make_shared<simulation::ScriptedDisplay>()),
      delegate_(std::make_shared<simulation::RecordingDelegate>()) {
  delegate_->onEvent = [this](const simulation::RecordingDelegate::Event& event) { hear(event); };
  events_.documentGiven(StreamDocument::read(JSONValue::parse(document).value));
  take(DocumentAnswer{.answer = {200, document}});
}

Simulation::~Simulation() = default;

void Simulation::run(const std::vector<SimulationStep>& steps) {
  for (const auto& step : steps) {
    std::visit([this](const auto& any) { take(any); }, step);
  }
}

void Simulation::take(const DocumentAnswer& step) {
  auto& server = platform_.server();
  server.forget(documentURL);
  switch (step.outcome) {
    case DocumentAnswer::Outcome::answered:
      return server.answer(documentURL, step.answer);
    case DocumentAnswer::Outcome::failed:
      return server.fail(documentURL, TransferError::couldNotConnect, step.answer.delay);
    case DocumentAnswer::Outcome::neverAnswered:
      return server.hang(documentURL);
  }
}

void Simulation::take(const SeekTo& step) {
  if (!manager_) return beginSession(step.time);
  show(SeekStarted{step.time});
  report(step.time);
}

void Simulation::take(const Pause& step) {
  beginSession();
  remark("pause", "for " + clockText(step.seconds));
  platform_.loop().advance(step.seconds);
}

void Simulation::take(const Text& step) {
  beginSession();
  reportText(step.text);
}

void Simulation::beginSession(double position) {
  if (manager_) return;
  manager_ = XELStreamManager::initWithVideoDisplay(display_);
  manager_->setDelegate(delegate_);
  std::shared_ptr<XELStreamRequest> request;
  if (settings_.isLive) {
    auto answer = simulation::StreamInitAnswerBuilder::live();
    answer.id3EventsURL = documentURL;
    if (settings_.pollingPeriod) answer.pollingFrequency = settings_.pollingPeriod;
    platform_.server().answer(platform_.liveInitURL(streamName), {200, answer.build()});
    request = XELLiveStreamRequest::initWithAssetKey(streamName);
  } else {
    auto answer = simulation::StreamInitAnswerBuilder::vod();
    answer.timeEventsURL = documentURL;
    platform_.server().answer(platform_.vodInitURL(streamName, streamName), {200, answer.build()});
    request = XELVODStreamRequest::initWithContentSourceID_videoID(streamName, streamName);
  }
  manager_->requestStream(request);
  platform_.loop().runUntilIdle();
  // The stream is loaded when the document has been answered, or its request has timed out.
  while (display_->loads().empty()) platform_.loop().advance(0.1);
  const auto& load = display_->loads().back();
  show(StreamLoaded{load.url, load.subtitles});
  display_->reportReady();
  report(position);
}

void Simulation::play(double to) {
  beginSession();
  const double from = position_;
  const auto ticks = std::floor((to - from) / tick_ + 1e-9);
  for (double tick = 1; tick <= ticks; ++tick) {
    playOn(from + tick * tick_);
    report(position_);
  }
  playOn(to);
}

/// Without a report at the end, but with the texts on the way.
void Simulation::playOn(double to) {
  const auto passTo = [this](double time) {
    platform_.loop().advance(time - position_);
    position_ = time;
  };
  if (to <= position_) return;
  const auto& texts = settings_.texts;
  auto next = std::upper_bound(texts.begin(), texts.end(), position_,
                               [](double time, const auto& text) { return time < text.first; });
  for (; next != texts.end() && next->first <= to; ++next) {
    passTo(next->first);
    reportText(next->second);
  }
  passTo(to);
}

void Simulation::report(double time) {
  position_ = time;
  events_.beginProgress(time);
  display_->reportProgress(time);
  events_.end();
}

void Simulation::reportText(const std::string& text) {
  events_.beginText(text);
  display_->reportTXXX(text);
  events_.end();
}

void Simulation::hear(const simulation::RecordingDelegate::Event& event) {
  if (const auto type = documentType(event.name); !type.empty()) {
    events_.adEvent(type, event.ad->adKey().value_or(""));
  }
  if (event.name == "adBreakDidEnd") events_.breakEnded();
  show(playEvent(event));
}

void Simulation::show(const PlayEvent& event) {
  if (std::holds_alternative<AdCountdown>(event) && !view_.wantsCountdowns()) return;
  view_.show(position_, contentTime(), event);
}

void Simulation::remark(const std::string& what, const std::string& about) {
  view_.remark(position_, contentTime(), what, about);
}

double Simulation::contentTime() const {
  return manager_ ? manager_->contentTimeForStreamTime(position_) : position_;
}

}  // namespace xel::simulate
