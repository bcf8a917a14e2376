#pragma once

#include <string>

#include "report/ReportModel.h"

namespace xel::report {

/// The report as one line of JSON that may stand in a script element: it holds
/// no "<". Times are rounded to milliseconds; what is absent or empty is left
/// out.
std::string toJSON(const Report& report);

}  // namespace xel::report
