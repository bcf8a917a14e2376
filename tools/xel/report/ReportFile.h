#pragma once

#include <string>

namespace xel::report {

/// Reads a trace and writes its report.
///
/// Says on standard error what was written and what it says of the pings, or
/// what is wrong.
/// @param trace a file's name; "-" is standard input.
/// @param page a file's name, which is replaced once the report is whole; "-"
/// is standard output.
/// @return the exit status: 0, or 2 for a trace that cannot be read, or 1 when
/// nothing was written.
int writeReport(const std::string& trace, const std::string& page);

}  // namespace xel::report
