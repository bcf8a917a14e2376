#pragma once

#include <CLI/CLI.hpp>

namespace xel {

/// Adds `xel play` to the command line. A session that was played leaves its exit status.
void registerPlay(CLI::App& app, int& exitStatus);

}  // namespace xel
