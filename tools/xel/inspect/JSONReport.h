#pragma once

#include <string>

#include "inspect/Inspection.h"

namespace xel::inspect {

/// One JSON object on one line.
std::string jsonReport(const std::string& file, const Inspection& inspection);

/// The table of rules as a JSON array on one line.
std::string jsonRules();

}  // namespace xel::inspect
