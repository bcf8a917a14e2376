#pragma once

#include <memory>

#include "xel/display/XELVideoDisplay.h"
#include "xel/platform/Environment.h"
#include "xel/platform/HTTPClient.h"
#include "xel/platform/JSONValue.h"
#include "xel/platform/Platform.h"
#include "xel/session/XELStreamRequest.h"

namespace xel::simulation {

// What stands in the lines of a trace, read back. A member that is missing or of the wrong type
// counts as absent.

Services readServices(const JSONValue& services);
std::shared_ptr<Environment> readEnvironment(const JSONValue& environment);
/// Null where the trace has none.
std::shared_ptr<XELStreamRequest> readRequest(const JSONValue& request);
HTTPResult readResult(const JSONValue& line);
/// Null for null.
std::shared_ptr<const Error> readError(const JSONValue& error);
TimedMetadata readMetadata(const JSONValue& metadata);

}  // namespace xel::simulation
