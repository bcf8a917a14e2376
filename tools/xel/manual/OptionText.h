#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace xel::manual {

/// What may stand as an option's value.
enum class ValueKind { none, text, choice, file, folder };

/// An option or positional argument of a command, as its help, manual page and completion tell it.
///
/// What it takes is read from the name of its value: lower-case names between "|", such as
/// "gstreamer|clock" and "N|max", are words to choose from; FILE, PAGE and PEM are files, DIR is a
/// folder. CLI11's own checks for files and sets of words count as well.
struct OptionText {
  explicit OptionText(const CLI::Option& option);

  bool isPositional = false;
  /// With their dashes; of a positional argument, its own.
  std::vector<std::string> names;
  /// Such as "HOST[:PORT]"; empty: none.
  std::string valueName;
  ValueKind value = ValueKind::none;
  std::vector<std::string> choices;
  /// With the default, and what it needs and excludes.
  std::string description;
  bool isRequired = false;
  bool isRepeatable = false;
};

/// The first line of a command's description, without a full stop.
std::string summaryOf(const CLI::App& command);
/// The options of a command that are not hidden, in the order of its help.
std::vector<OptionText> optionsOf(const CLI::App& command);
/// The commands below it that are not hidden.
std::vector<const CLI::App*> commandsOf(const CLI::App& command);

}  // namespace xel::manual
