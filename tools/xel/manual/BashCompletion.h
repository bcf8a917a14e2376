#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace xel::manual {

/// A script that lets bash complete the program's commands, options and their values, for the
/// folder of bash-completion or to be sourced. It needs nothing but bash.
std::string bashCompletion(const CLI::App& program);

}  // namespace xel::manual
