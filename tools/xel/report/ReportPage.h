#pragma once

#include <string>

#include "report/ReportModel.h"

namespace xel::report {

/// The report as one HTML page that needs nothing else.
std::string pageOf(const Report& report);

}  // namespace xel::report
