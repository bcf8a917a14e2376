#pragma once

#include <CLI/CLI.hpp>

namespace xel {

/// Adds `xel inspect` to the command line. It leaves 0, 1 when something is found, and 2 when a
/// file cannot be inspected.
void registerInspect(CLI::App& app, int& exitStatus);

}  // namespace xel
