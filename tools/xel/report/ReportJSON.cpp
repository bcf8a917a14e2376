#include "report/ReportJSON.h"

#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/simulation/JSONWriter.h"

namespace xel::report {
namespace {

constexpr std::array<std::string_view, 3> pingOutcomes = {"accepted", "failed", "unanswered"};
constexpr std::array<std::string_view, 3> adOutcomes = {"completed", "cutOff", "notStarted"};
constexpr std::array<std::string_view, 3> rows = {"ads", "player", "documents"};
constexpr std::array<std::string_view, 3> severities = {"error", "warning", "note"};

template <typename Enum>
std::string_view nameOf(Enum value, const std::array<std::string_view, 3>& names) {
  return names[static_cast<std::size_t>(value)];
}

/// Milliseconds are enough, and they keep the page small.
double rounded(double seconds) {
  constexpr double perSecond = 1000;
  return std::round(seconds * perSecond) / perSecond;
}

/// An object, written without the members that are absent or empty.
class Object {
 public:
  explicit Object(simulation::JSONWriter& out) : out_(out) { out_.beginObject(); }
  ~Object() { out_.endObject(); }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  Object& text(std::string_view name, std::string_view value) {
    if (!value.empty()) out_.member(name, value);
    return *this;
  }
  Object& text(std::string_view name, const std::string& value) {
    return text(name, std::string_view(value));
  }
  Object& text(std::string_view name, const std::optional<std::string>& value) {
    return value ? text(name, *value) : *this;
  }
  Object& texts(std::string_view name, const std::vector<std::string>& values) {
    out_.member(name, values);
    return *this;
  }
  Object& number(std::string_view name, const std::optional<double>& value) {
    if (value) out_.member(name, rounded(*value));
    return *this;
  }
  template <typename Integer>
  Object& count(std::string_view name, const std::optional<Integer>& value) {
    if (value) out_.member(name, *value);
    return *this;
  }
  Object& count(std::string_view name, std::integral auto value) {
    out_.member(name, value);
    return *this;
  }
  Object& flag(std::string_view name, bool value) {
    if (value) out_.member(name, true);
    return *this;
  }

 private:
  simulation::JSONWriter& out_;
};

void write(simulation::JSONWriter& out, const Ping& ping) {
  Object(out)
      .number("time", ping.time)
      .number("position", ping.position)
      .text("event", ping.event)
      .count("ad", ping.ad)
      .text("url", ping.url)
      .text("outcome", nameOf(ping.outcome, pingOutcomes))
      .count("status", ping.status)
      .text("error", ping.error)
      .number("milliseconds", ping.milliseconds);
}

void write(simulation::JSONWriter& out, const Ad& ad) {
  Object(out)
      .text("key", ad.key)
      .text("id", ad.id)
      .text("title", ad.title)
      .text("system", ad.system)
      .count("break", ad.adBreak)
      .text("breakKey", ad.breakKey)
      .count("place", ad.place)
      .number("duration", ad.duration)
      .number("start", ad.start)
      .number("end", ad.end)
      .number("position", ad.position)
      .text("outcome", nameOf(ad.outcome, adOutcomes))
      .text("why", ad.why)
      .flag("isExpected", ad.isExpected)
      .texts("reached", ad.reached)
      .count("pingsNotSent", ad.pingsNotSent);
}

void write(simulation::JSONWriter& out, const Break& adBreak) {
  Object(out)
      .text("key", adBreak.key)
      .number("start", adBreak.start)
      .number("end", adBreak.end)
      .number("position", adBreak.position)
      .count("totalAds", adBreak.totalAds)
      .number("duration", adBreak.duration);
}

void write(simulation::JSONWriter& out, const Stream& stream) {
  Object(out)
      .flag("isPreroll", stream.isPreroll)
      .text("url", stream.url)
      .number("start", stream.start)
      .number("end", stream.end);
}

void write(simulation::JSONWriter& out, const PlayheadPath& path) {
  out.beginArray();
  for (const auto& [time, position] : path) {
    out.beginArray().value(rounded(time)).value(rounded(position)).endArray();
  }
  out.endArray();
}

void write(simulation::JSONWriter& out, const Jump& jump) {
  Object(out)
      .number("time", jump.time)
      .number("from", jump.from)
      .number("to", jump.to)
      .flag("isSeek", jump.isSeek);
}

void write(simulation::JSONWriter& out, const Pause& pause) {
  Object(out).number("start", pause.start).number("end", pause.end);
}

void write(simulation::JSONWriter& out, const Event& event) {
  Object(out)
      .number("time", event.time)
      .number("position", event.position)
      .text("row", nameOf(event.row, rows))
      .text("name", event.name)
      .text("detail", event.detail)
      .count("ad", event.ad)
      .flag("isFailure", event.isFailure)
      .number("milliseconds", event.milliseconds);
}

void write(simulation::JSONWriter& out, const Loss& loss) {
  Object(out)
      .text("severity", nameOf(loss.severity, severities))
      .text("what", loss.what)
      .text("why", loss.why)
      .count("count", loss.count)
      .number("time", loss.time)
      .number("position", loss.position);
}

void write(simulation::JSONWriter& out, const Finding& finding) {
  Object(out)
      .text("severity", nameOf(finding.severity, severities))
      .text("rule", finding.rule)
      .text("document", finding.document)
      .text("place", finding.place)
      .text("text", finding.text)
      .text("remedy", finding.remedy);
}

void write(simulation::JSONWriter& out, const Fact& fact) {
  Object(out).text("name", fact.name).text("value", fact.value);
}

template <typename Item>
void writeList(simulation::JSONWriter& out, std::string_view name, const std::vector<Item>& items) {
  out.name(name).beginArray();
  for (const auto& item : items) write(out, item);
  out.endArray();
}

void write(simulation::JSONWriter& out, const Session& session) {
  Object object(out);
  object.text("library", session.library)
      .text("recorded", session.recorded)
      .flag("isLive", session.isLive)
      .text("stream", session.stream)
      .text("streamID", session.streamID)
      .number("duration", session.duration)
      .count("exitStatus", session.exitStatus)
      .flag("isWhole", session.isWhole);
  writeList(out, "facts", session.facts);
}

void write(simulation::JSONWriter& out, const MetadataFigures& figures) {
  Object(out)
      .count("events", figures.events)
      .number("worst", figures.worst)
      .number("sum", figures.sum)
      .count("texts", figures.texts)
      .count("unknownTexts", figures.unknownTexts);
}

void write(simulation::JSONWriter& out, const Report& report) {
  Object object(out);
  object.text("statement", pingStatement(report)).number("startUp", report.startUp);
  out.name("session");
  write(out, report.session);
  out.name("metadata");
  write(out, report.metadata);
  writeList(out, "streams", report.streams);
  writeList(out, "playhead", report.playhead);
  writeList(out, "jumps", report.jumps);
  writeList(out, "pauses", report.pauses);
  writeList(out, "breaks", report.breaks);
  writeList(out, "ads", report.ads);
  writeList(out, "events", report.events);
  writeList(out, "pings", report.pings);
  writeList(out, "losses", report.losses);
  writeList(out, "findings", report.findings);
}

}  // namespace

std::string toJSON(const Report& report) {
  simulation::JSONWriter out;
  write(out, report);
  std::string escaped;
  escaped.reserve(out.text().size());
  for (const char character : out.text()) {
    if (character == '<') {
      escaped += "\\u003c";
    } else {
      escaped += character;
    }
  }
  return escaped;
}

}  // namespace xel::report
