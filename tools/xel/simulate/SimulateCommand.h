#pragma once

#include <CLI/CLI.hpp>

namespace xel {

/// Adds `xel simulate`. Its callback sets `exitStatus`, which must outlive the app.
void registerSimulate(CLI::App& app, int& exitStatus);

}  // namespace xel
