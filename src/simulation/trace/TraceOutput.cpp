#include "simulation/trace/TraceOutput.h"

#include <chrono>
#include <map>

namespace xel::simulation {

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

const std::vector<std::string_view>& outputMembers(std::string_view kind) {
  static const std::map<std::string_view, std::vector<std::string_view>> members = {
      {"httpRequest", {"method", "url", "headers", "body", "pingEvent", "timeout"}},
      {"loadURL", {"url", "subtitles"}},
      {"timerSet", {"seconds"}},
      {"timerCancel", {"id"}},
      {"delegate", {"call", "streamID", "ad", "adBreakInfo", "remaining", "cuepoints", "error"}},
  };
  static const std::vector<std::string_view> none;
  const auto found = members.find(kind);
  return found == members.end() ? none : found->second;
}

}  // namespace xel::simulation
