#include "simulation/trace/TraceOutput.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <utility>

namespace xel::simulation {
namespace {

/// Of what the library does, by kind: the members that are compared, in the order of writing.
const std::map<std::string_view, std::vector<std::string_view>>& outputMembers() {
  static const std::map<std::string_view, std::vector<std::string_view>> members = {
      {"httpRequest", {"method", "url", "headers", "body", "pingEvent", "timeout"}},
      {"loadURL", {"url", "subtitles"}},
      {"timerSet", {"seconds"}},
      {"timerCancel", {"id"}},
      {"delegate", {"call", "streamID", "ad", "adBreakInfo", "remaining", "cuepoints", "error"}},
  };
  return members;
}

/// Each process draws a number of its own for its stream requests.
std::string withoutCorrelator(std::string members) {
  constexpr std::string_view mark = "\"body\":\"correlator=";
  const auto found = members.find(mark);
  if (found == std::string::npos) return members;
  const auto begin = found + mark.size();
  const auto end = std::min(members.find_first_not_of("0123456789", begin), members.size());
  return members.erase(begin, end - begin);
}

std::string requestName(std::string_view method, std::optional<std::string_view> pingEvent) {
  return pingEvent ? "ping " + std::string(*pingEvent) : std::string(method);
}

}  // namespace

bool isOutput(std::string_view kind) { return outputMembers().contains(kind); }

TraceOutput TraceOutput::fromLine(const TraceLine& line) {
  JSONWriter writer;
  writer.beginObject();
  for (const auto name : outputMembers().at(line.kind)) {
    if (line.value.has(name)) writer.member(name, line.value[name]);
  }
  const auto& value = line.value;
  auto name = line.kind;
  if (line.kind == "delegate") name = value["call"].text().value_or("");
  if (line.kind == "httpRequest") {
    name = requestName(value["method"].text().value_or(""), value["pingEvent"].text());
  }
  return {line.kind, std::move(name), withoutCorrelator(writer.endObject().text())};
}

TraceOutput TraceOutput::fromRequest(const HTTPRequest& request) {
  JSONWriter writer;
  writer.beginObject();
  writeRequest(writer, request);
  return {"httpRequest", requestName(request.method, request.trackingEvent),
          withoutCorrelator(writer.endObject().text())};
}

void writeHeaders(JSONWriter& line, const std::vector<HTTPHeader>& headers) {
  line.name("headers").beginArray();
  for (const auto& [name, value] : headers) line.beginArray().value(name).value(value).endArray();
  line.endArray();
}

void writeRequest(JSONWriter& line, const HTTPRequest& request) {
  line.member("method", request.method).name("url").url(request.url);
  writeHeaders(line, request.headers);
  if (!request.body.empty()) line.member("body", request.body);
  if (request.trackingEvent) line.member("pingEvent", *request.trackingEvent);
  if (request.timeout) {
    line.member("timeout", std::chrono::duration<double>(*request.timeout).count());
  }
}

void writeLoad(JSONWriter& line, const std::string& url, const std::vector<JSONValue>& subtitles) {
  line.name("url").url(url).member("subtitles", subtitles);
}

}  // namespace xel::simulation
