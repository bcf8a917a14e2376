#include "report/ReportBuilder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "common/PrintableText.h"
#include "report/Losses.h"

namespace xel::report {
namespace {

std::string textOf(const JSONValue& value) { return std::string(value.text().value_or("")); }

Session sessionOf(const JSONValue& header) {
  Session session;
  session.library = textOf(header["library"]);
  session.recorded = textOf(header["recorded"]);
  const auto request = header["request"];
  session.isLive = request["type"].text() == "live";
  session.stream = session.isLive
                       ? textOf(request["assetKey"])
                       : textOf(request["contentSourceID"]) + '/' + textOf(request["videoID"]);
  const auto environment = header["environment"];
  const auto services = header["services"];
  const std::array<std::pair<const char*, JSONValue>, 7> facts = {{
      {"Ad server", services[session.isLive ? "liveHost" : "vodHost"]},
      {"Application", environment["applicationIdentifier"]},
      {"Application version", environment["applicationVersion"]},
      {"System", environment["operatingSystemName"]},
      {"System version", environment["operatingSystemVersion"]},
      {"Device", environment["hardwareModel"]},
      {"Manifest suffix", request["manifestURLSuffix"]},
  }};
  for (const auto& [name, value] : facts) {
    if (!textOf(value).empty()) session.facts.push_back({name, textOf(value)});
  }
  request["adTagParameters"].forEachMember([&](std::string_view name, const JSONValue& value) {
    session.facts.push_back({"Ad tag " + std::string(name), textOf(value)});
  });
  return session;
}

/// Whether a step of the playhead is more than playback at the speed so far can
/// be.
bool isJump(double elapsed, double moved, double speed) {
  constexpr double backward = -0.5;
  constexpr double forward = 2;
  return moved < backward || moved > forward + 3 * std::max(speed, 1.0) * elapsed;
}

}  // namespace

ReportBuilder::ReportBuilder(const JSONValue& header) { report_.session = sessionOf(header); }

const std::map<std::string_view, ReportBuilder::Handler>& ReportBuilder::handlers() {
  static const std::map<std::string_view, Handler> handlers = {
      {"httpRequest", &ReportBuilder::addRequest},
      {"httpResult", &ReportBuilder::addResult},
      {"loadURL", &ReportBuilder::addLoad},
      {"ready", &ReportBuilder::addReady},
      {"progress", &ReportBuilder::addProgress},
      {"metadata", &ReportBuilder::addMetadata},
      {"failure", &ReportBuilder::addFailure},
      {"delegate", &ReportBuilder::addDelegateCall},
      {"log", &ReportBuilder::addLogLine},
      {"release", &ReportBuilder::addRelease},
      {"seek", &ReportBuilder::addSeek},
      {"pause", &ReportBuilder::addPause},
      {"resume", &ReportBuilder::addResume},
      {"missed", &ReportBuilder::addMissed},
      {"end", &ReportBuilder::addEnd},
  };
  return handlers;
}

void ReportBuilder::add(const simulation::TraceLine& line) {
  now_.time = std::max(now_.time, line.time);
  const auto handler = handlers().find(line.kind);
  if (handler != handlers().end()) (this->*handler->second)(line.value);
}

Report ReportBuilder::finish(bool isCutOff) {
  report_.session.duration = now_.time;
  report_.session.isWhole = !isCutOff;
  endPath();
  endStream();
  endPause();
  requests_.finish();
  ads_.finish();
  documents_.finish();
  std::stable_sort(report_.events.begin(), report_.events.end(),
                   [](const Event& a, const Event& b) { return a.time < b.time; });
  report_.losses = lossesOf(report_);
  return std::move(report_);
}

void ReportBuilder::addRequest(const JSONValue& line) {
  requests_.addRequest(line, ads_.lastStarted());
}

void ReportBuilder::addResult(const JSONValue& line) {
  auto answer = requests_.addResult(line);
  if (!answer) return;
  if (answer->isStreamInit) {
    documents_.addStreamInitAnswer(std::move(answer->body));
  } else {
    documents_.addDocument(std::move(answer->url), std::move(answer->body));
  }
}

void ReportBuilder::addLoad(const JSONValue& line) {
  endPath();
  endStream();
  const auto url = textOf(line["url"]);
  report_.streams.push_back({.isPreroll = documents_.prerollManifest() == url,
                             .url = url,
                             .start = now_.time,
                             .end = now_.time});
  // What the player reports from here on is of another stream.
  now_.position.reset();
}

void ReportBuilder::addReady(const JSONValue&) {
  isReady_ = true;
  addPlayerEvent("ready", "");
}

void ReportBuilder::addProgress(const JSONValue& line) {
  const auto position = line["time"].number();
  if (!position) return;
  if (isReady_ && !report_.startUp && requests_.firstRequest()) {
    report_.startUp = now_.time - *requests_.firstRequest();
  }
  noteJump(*position);
  now_.position = position;
  path_.add(now_.time, *position);
  documents_.addProgress(*position);
  lastReport_ = now_.time;
}

void ReportBuilder::noteJump(double position) {
  if (!now_.position || !lastReport_) return;
  const auto elapsed = now_.time - *lastReport_;
  const auto moved = position - *now_.position;
  // The player may report its old position for a while after it was asked to
  // seek.
  constexpr double arrived = 1;
  const bool isSeek = seekTo_ && std::abs(position - *seekTo_) < arrived;
  if (isSeek || isJump(elapsed, moved, speed_)) {
    endPath();
    report_.jumps.push_back({now_.time, *now_.position, position, seekTo_.has_value()});
    seekTo_.reset();
  } else if (elapsed > 0) {
    speed_ = moved / elapsed;
  }
}

void ReportBuilder::addMetadata(const JSONValue& line) {
  if (const auto text = line["metadata"]["TXXX"].text()) documents_.addText(std::string(*text));
}

void ReportBuilder::addFailure(const JSONValue& line) {
  addPlayerEvent("failure", errorText(line["error"]), true);
}

void ReportBuilder::addDelegateCall(const JSONValue& line) {
  const auto call = line["call"].text().value_or("");
  if (call == "didCountdownTo") return;
  Event event = {.time = now_.time, .position = now_.position, .name = std::string(call)};
  const auto adsBefore = report_.ads.size();
  ads_.addCall(call, line);
  if (report_.ads.size() > adsBefore) requests_.adDidStart(adsBefore);
  if (!adEventOf(call).empty()) {
    event.ad = ads_.lastStarted();
    documents_.addAdEvent();
  } else if (line.has("adBreakInfo")) {
    event.detail = textOf(line["adBreakInfo"]["adBreakKey"]);
  } else if (call == "didInitializeStream") {
    event.detail = textOf(line["streamID"]);
    report_.session.streamID = event.detail;
  } else if (call == "didUpdateCuepoints") {
    event.detail = std::to_string(line["cuepoints"].elements().size()) + " cue points";
  } else if (call == "didReceiveError") {
    event.detail = errorText(line["error"]);
    event.isFailure = true;
  }
  report_.events.push_back(std::move(event));
}

void ReportBuilder::addLogLine(const JSONValue& line) {
  // The pings tell more about each of theirs.
  const auto text = textOf(line["line"]);
  if (text.find("Tracking ping failed") != std::string::npos) return;
  addPlayerEvent("log", text, true);
}

void ReportBuilder::addRelease(const JSONValue&) {
  addPlayerEvent("release", "the host let go of the manager");
}

void ReportBuilder::addSeek(const JSONValue& line) {
  seekTo_ = line["to"].number().value_or(0);
  addPlayerEvent("seek", "to " + clockText(*seekTo_));
}

void ReportBuilder::addPause(const JSONValue&) {
  if (!pausedSince_) pausedSince_ = now_.time;
  addPlayerEvent("pause", "");
}

void ReportBuilder::addResume(const JSONValue&) {
  endPause();
  addPlayerEvent("resume", "");
}

void ReportBuilder::addMissed(const JSONValue& line) {
  const auto segments = std::max<std::int64_t>(line["segments"].integer().value_or(0), 0);
  report_.missedSegments += static_cast<std::size_t>(segments);
  addPlayerEvent("missed segments", std::to_string(segments), true);
}

void ReportBuilder::addEnd(const JSONValue& line) {
  report_.session.exitStatus = line["exitStatus"].integer();
}

void ReportBuilder::addPlayerEvent(std::string name, std::string detail, bool isFailure) {
  report_.events.push_back({.time = now_.time,
                            .position = now_.position,
                            .row = Event::Row::player,
                            .name = std::move(name),
                            .detail = std::move(detail),
                            .isFailure = isFailure});
}

void ReportBuilder::endPath() {
  auto path = path_.take();
  if (!path.empty()) report_.playhead.push_back(std::move(path));
}

void ReportBuilder::endStream() {
  if (!report_.streams.empty()) report_.streams.back().end = now_.time;
}

void ReportBuilder::endPause() {
  if (pausedSince_) report_.pauses.push_back({*std::exchange(pausedSince_, {}), now_.time});
}

}  // namespace xel::report
