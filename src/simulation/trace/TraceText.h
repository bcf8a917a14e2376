#pragma once

#include <string>
#include <utility>

#include "simulation/trace/TraceOutput.h"

namespace xel::simulation {

/// Both as people name them, "nothing" for null; where they would read the same, with the member in
/// which they differ.
std::pair<std::string, std::string> describe(const TraceOutput* expected, const TraceOutput* got);

}  // namespace xel::simulation
