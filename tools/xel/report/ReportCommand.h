#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace xel {

/// Adds `xel report` to the command line. A report that was made leaves the
/// exit status 0.
void registerReport(CLI::App& app, int& exitStatus);

/// Whether this xel can make reports: Node.js was there when it was built.
bool canReport();

/// Makes the report of a trace; as `report::writeReport`, or says why it cannot and gives 1.
int makeReport(const std::string& trace, const std::string& page);

}  // namespace xel
