#pragma once

#include <CLI/CLI.hpp>

namespace xel {

/// Adds `xel serve` to the command line. It serves until SIGINT or SIGTERM, and leaves 0.
void registerServe(CLI::App& app, int& exitStatus);

}  // namespace xel
