#pragma once

#include <string>

#include "inspect/Inspection.h"

namespace xel::inspect {

/// An inspection for people, as lines of text; but for URLs no line is longer than 100 columns.
std::string textReport(const Inspection& inspection, bool inColour);

/// The table of rules for people.
std::string textRules(bool inColour);

/// Such as "1 error, 2 warnings, 0 notes".
std::string countsText(const Inspection::Counts& counts);

}  // namespace xel::inspect
