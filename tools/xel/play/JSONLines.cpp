#include "play/JSONLines.h"

#include <variant>

#include "xel/simulation/JSONWriter.h"

namespace xel {
namespace {

using simulation::JSONWriter;

/// Adds what the event carries beside its name.
struct AddFields {
  JSONWriter& line;

  void operator()(const StreamInitialized& event) const { line.member("streamID", event.streamID); }
  void operator()(const StreamLoaded& event) const {
    line.member("url", event.url);
    line.member("subtitles", event.subtitles);
  }
  void operator()(const SeekStarted& event) const { line.member("to", event.to); }
  void operator()(const ReadyForPlayback&) const {}
  void operator()(const BreakEvent& event) const { line.member("adBreakInfo", event.info); }
  void operator()(const AdEvent& event) const { line.member("ad", event.ad); }
  void operator()(const AdCountdown& event) const {
    line.member("ad", event.ad);
    line.member("remaining", event.remaining);
  }
  void operator()(const CuepointsUpdated& event) const {
    line.member("cuepoints", event.cuepoints);
  }
  void operator()(const ErrorReceived& event) const { line.member("error", event.error); }
  void operator()(const PingSent& event) const {
    line.member("pingEvent", event.pingEvent);
    line.member("url", event.url);
  }
  void operator()(const PingAnswered& event) const {
    line.member("pingEvent", event.pingEvent);
    line.member("url", event.url);
    if (event.error) {
      line.member("error", event.error);
    } else {
      line.member("status", event.status);
    }
    line.member("ms", event.milliseconds);
  }
  void operator()(const TimeConverted& event) const {
    line.member("time", event.time);
    line.member("contentTime", event.contentTime);
    line.member("streamTime", event.streamTime);
    line.member("previousCuepoint", event.previousCuepoint);
  }
};

}  // namespace

void addMembers(JSONWriter& line, const PlayEvent& event) {
  line.name("event").keyword(std::visit([](const auto& any) { return any.name; }, event));
  std::visit(AddFields{line}, event);
}

std::string toJSON(double time, const PlayEvent& event, const OutputFilter& filter) {
  JSONWriter line([&filter](std::string_view text, JSONWriter::TextKind) {
    return filter ? filter(text) : std::string(text);
  });
  line.beginObject().member("t", time);
  addMembers(line, event);
  return line.endObject().text();
}

void JSONLines::show(double time, const PlayEvent& event) {
  const auto line = toJSON(time, event, filter_) + '\n';
  std::fwrite(line.data(), 1, line.size(), out_);
  std::fflush(out_);
}

}  // namespace xel
