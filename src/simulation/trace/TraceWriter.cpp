#include "simulation/trace/TraceWriter.h"

#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <string>
#include <utility>

#include "xel/platform/Platform.h"
#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/TraceReader.h"

#include "simulation/trace/SessionSecrets.h"

namespace xel::simulation {
namespace {

double steadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// The time of day, such as "2026-01-31T15:00:00Z".
std::string universalTime() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  gmtime_r(&now, &parts);
  std::array<char, 32> text;
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

void writeServices(JSONWriter& line, const Services& services) {
  line.name("services").beginObject();
  line.member("liveHost", services.liveHost).member("vodHost", services.vodHost);
  line.name("measurementDomains").beginArray();
  for (const auto& domain : services.measurementDomains) line.value(domain);
  line.endArray().endObject();
}

void writeEnvironment(JSONWriter& line, const Environment& environment) {
  line.name("environment").beginObject();
  line.member("libraryVersion", environment.libraryVersion());
  line.member("applicationIdentifier", environment.applicationIdentifier());
  line.member("applicationVersion", environment.applicationVersion());
  line.member("operatingSystemName", environment.operatingSystemName());
  line.member("operatingSystemVersion", environment.operatingSystemVersion());
  line.member("hardwareModel", environment.hardwareModel());
  line.member("advertisingIdentifier", environment.advertisingIdentifier());
  line.member("isAdvertisingTrackingEnabled", environment.isAdvertisingTrackingEnabled());
  line.endObject();
}

/// Null where the library would refuse the request.
void writeRequest(JSONWriter& line, const std::shared_ptr<XELStreamRequest>& request) {
  const auto live = std::dynamic_pointer_cast<XELLiveStreamRequest>(request);
  const auto vod = std::dynamic_pointer_cast<XELVODStreamRequest>(request);
  line.name("request");
  if (!live && !vod) {
    line.value(nullptr);
    return;
  }
  line.beginObject().name("type").keyword(live ? "live" : "vod");
  if (live) {
    line.member("assetKey", live->assetKey()).member("attemptPreroll", live->attemptPreroll());
  } else {
    line.member("contentSourceID", vod->contentSourceID()).member("videoID", vod->videoID());
  }
  const auto optional = [&line](std::string_view name, const std::optional<std::string>& text) {
    if (text) line.member(name, *text);
  };
  optional("apiKey", request->apiKey());
  optional("authToken", request->authToken());
  optional("streamActivityMonitorID", request->streamActivityMonitorID());
  if (!request->adTagParameters().empty()) {
    line.member("adTagParameters", request->adTagParameters());
  }
  if (request->manifestURLSuffix())
    line.name("manifestURLSuffix").url(request->manifestURLSuffix());
  line.endObject();
}

}  // namespace

TraceWriter::TraceWriter(TraceRecorder::Sink sink, TraceRecorder::Options options)
    : sink_(std::move(sink)),
      redactURLs_(options.redactURLs),
      now_(options.now ? std::move(options.now) : steadySeconds),
      redactor_(options.redactURLs) {}

void TraceWriter::begin(const std::shared_ptr<XELStreamRequest>& request) {
  if (!sink_ || std::exchange(hasBegun_, true)) return;
  begunAt_ = now_();
  const auto& [http, loop, environment, log, services] = Platform::current();
  if (request) addSecrets(redactor_, *request);
  redactor_.addSecret(environment->advertisingIdentifier());
  if (const auto version = environment->libraryVersion()) redactor_.keepInURLs("t." + *version);
  for (const auto& domain : services.measurementDomains) redactor_.keepInURLs(domain);

  auto line = makeLine();
  line.beginObject().name("trace").keyword("xel").member("version", traceVersion);
  line.member("library", makeLinuxEnvironment({})->libraryVersion());
  line.name("recorded").keyword(universalTime());
  writeServices(line, services);
  writeEnvironment(line, *environment);
  writeRequest(line, request);
  line.name("redacted").beginObject().member("urls", redactURLs_).endObject();
  put(line.endObject());
}

void TraceWriter::note(std::string_view kind, const Members& members) {
  write(kind, false, members);
}

void TraceWriter::input(std::string_view kind, const Members& members) {
  write(kind, true, members);
}

TraceWriter::OpenCall TraceWriter::output(std::string_view kind, const Members& members) {
  write(kind, false, members);
  return OpenCall(shared_from_this());
}

JSONWriter TraceWriter::makeLine() {
  return JSONWriter([this](std::string_view text, JSONWriter::TextKind kind) {
    return kind == JSONWriter::TextKind::url ? redactor_.url(text) : redactor_.text(text);
  });
}

void TraceWriter::write(std::string_view kind, bool isInput, const Members& members) {
  if (!isRecording()) return;
  auto line = makeLine();
  line.beginObject().member("t", std::round((now_() - begunAt_) * 1e6) / 1e6);
  line.name("kind").keyword(kind);
  if (isInput && openCalls_ > 0) line.member("inside", openCalls_);
  members(line);
  put(line.endObject());
}

void TraceWriter::put(const JSONWriter& line) {
  // A copy: nothing is known of what the sink lets go of.
  const auto sink = sink_;
  sink(line.text() + '\n');
}

}  // namespace xel::simulation
