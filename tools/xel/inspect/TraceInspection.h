#pragma once

#include <string_view>

#include "inspect/Inspection.h"

namespace xel::inspect {

/// Inspects the documents that came within a recorded session, as the client that recorded it.
///
/// Throws std::runtime_error with one line when the trace cannot be read.
Inspection inspectTrace(std::string_view trace, const ClientFacts& facts);

}  // namespace xel::inspect
