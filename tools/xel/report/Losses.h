#pragma once

#include <vector>

#include "report/ReportModel.h"

namespace xel::report {

/// What a session lost, the worst first: pings, ads, documents and what else
/// went wrong. Losses of the same kind with the same reason are one.
std::vector<Loss> lossesOf(const Report& report);

}  // namespace xel::report
