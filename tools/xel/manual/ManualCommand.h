#pragma once

#include <CLI/CLI.hpp>

namespace xel {

/// Adds the hidden command `xel manual FOLDER`, which writes the manual pages and the completion
/// for bash from the program's description of all its commands; the build uses it. Leaves 0.
void registerManual(CLI::App& app, int& exitStatus);

}  // namespace xel
