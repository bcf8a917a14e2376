#pragma once

#include <CLI/CLI.hpp>

namespace xel {

/// Adds `xel report` to the command line. A report that was made leaves the
/// exit status 0.
void registerReport(CLI::App& app, int& exitStatus);

}  // namespace xel
