#pragma once

#include <CLI/CLI.hpp>

namespace xel {

/// Adds `xel replay`.
/// @param exitStatus is set when the command has run.
void registerReplay(CLI::App& app, int& exitStatus);

}  // namespace xel
