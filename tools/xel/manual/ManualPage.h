#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace xel::manual {

/// A page for man(1), in the language of man(7).
struct ManualPage {
  /// Such as "xel-play".
  std::string name;
  std::string text;
};

/// A page for the program and one for each of its commands. Commands below those stand in the page
/// of theirs.
///
/// In the footer of a command a line such as "Exit status:" begins a section; within one, what is
/// indented and followed by two spaces is a label, but in "Examples:".
std::vector<ManualPage> manualPages(const CLI::App& program, const std::string& version);

}  // namespace xel::manual
