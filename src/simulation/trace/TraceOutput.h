#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/HTTPClient.h"
#include "xel/platform/JSONValue.h"
#include "xel/simulation/JSONWriter.h"
#include "xel/simulation/TraceReader.h"

namespace xel::simulation {

/// Something that the library does, in a form in which equal things have equal texts.
struct TraceOutput {
  /// As in a trace, such as "delegate".
  std::string kind;
  /// What people call it: "adDidStart", "ping start", "POST"; else as its kind.
  std::string name;
  /// The members of its line beside time, kind and id, without what differs from one process to the
  /// next. JSON.
  std::string members;

  bool operator==(const TraceOutput&) const = default;

  static TraceOutput fromLine(const TraceLine& line);
  static TraceOutput fromRequest(const HTTPRequest& request);
};

/// Whether lines of the kind tell what the library does.
bool isOutput(std::string_view kind);

// The members, written as they stand in a line.

void writeHeaders(JSONWriter& line, const std::vector<HTTPHeader>& headers);
void writeRequest(JSONWriter& line, const HTTPRequest& request);
void writeLoad(JSONWriter& line, const std::string& url, const std::vector<JSONValue>& subtitles);

}  // namespace xel::simulation
