#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/HTTPClient.h"
#include "xel/platform/JSONValue.h"
#include "xel/simulation/JSONWriter.h"

namespace xel::simulation {

// What the library does, as the members of a trace's line beside time, kind and id; for what writes
// a trace, and for what compares one.

void writeHeaders(JSONWriter& line, const std::vector<HTTPHeader>& headers);
void writeRequest(JSONWriter& line, const HTTPRequest& request);
void writeLoad(JSONWriter& line, const std::string& url, const std::vector<JSONValue>& subtitles);

/// The names of those members, in the order of writing, some of them optional. Empty for a kind
/// that is not the library's doing.
const std::vector<std::string_view>& outputMembers(std::string_view kind);

}  // namespace xel::simulation
