#include "manual/OptionText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <string_view>

namespace xel::manual {
namespace {

bool isWord(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char character) {
    return std::islower(character) != 0 || std::isdigit(character) != 0 || character == '-';
  });
}

/// The words among what the separator parts.
std::vector<std::string> wordsIn(const std::string& text, char separator) {
  std::vector<std::string> words;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, separator);) {
    if (isWord(piece)) words.push_back(piece);
  }
  return words;
}

/// What CLI11 says of the values that it checks for itself.
bool isCheck(const std::string& text) {
  constexpr std::array<std::string_view, 5> checks = {"FILE", "DIR", "PATH(existing)", "POSITIVE",
                                                      "NONNEGATIVE"};
  return text.starts_with('{') || text.find(" in ") != std::string::npos ||
         std::find(checks.begin(), checks.end(), text) != checks.end();
}

std::string namesOf(const std::set<CLI::Option*>& options) {
  std::string names;
  for (const auto* option : options) names += (names.empty() ? "" : ", ") + option->get_name();
  return names;
}

}  // namespace

OptionText::OptionText(const CLI::Option& option)
    : isPositional(option.get_positional() && !option.nonpositional()),
      description(option.get_description()),
      isRequired(option.get_required()),
      isRepeatable(option.get_expected_max() == CLI::detail::expected_max_vector_size) {
  if (isPositional) {
    names = {option.get_name(true, false)};
  } else {
    for (const auto& name : option.get_snames()) names.push_back("-" + name);
    for (const auto& name : option.get_lnames()) names.push_back("--" + name);
  }

  // The name of the value, and after a colon its check if CLI11 has one.
  const auto typeName = option.get_type_name();
  auto colon = typeName.find(':');
  while (colon != std::string::npos && !isCheck(typeName.substr(colon + 1))) {
    colon = typeName.find(':', colon + 1);
  }
  const auto name = typeName.substr(0, colon);
  const auto check = colon == std::string::npos ? "" : typeName.substr(colon + 1);
  const bool takesValue = option.get_items_expected_max() != 0;
  if (takesValue && !isPositional) valueName = name == "TEXT" && check == "FILE" ? check : name;
  const auto isAny = [&](auto... kinds) { return ((name == kinds || check == kinds) || ...); };
  if (check.starts_with('{')) {
    choices = wordsIn(check.substr(1, check.find('}') - 1), ',');
  } else if (name.find('|') != std::string::npos) {
    choices = wordsIn(name, '|');
  }
  value = !takesValue                                    ? ValueKind::none
          : !choices.empty()                             ? ValueKind::choice
          : isPositional || isAny("FILE", "PAGE", "PEM") ? ValueKind::file
          : isAny("DIR")                                 ? ValueKind::folder
                                                         : ValueKind::text;

  if (takesValue && !option.get_default_str().empty()) {
    description += " (default: " + option.get_default_str() + ")";
  }
  if (const auto needed = namesOf(option.get_needs()); !needed.empty()) {
    description += "\n(needs " + needed + ")";
  }
  if (const auto excluded = namesOf(option.get_excludes()); !excluded.empty()) {
    description += "\n(not with " + excluded + ")";
  }
}

std::string summaryOf(const CLI::App& command) {
  auto summary = command.get_description();
  summary.resize(std::min(summary.find('\n'), summary.size()));
  if (summary.ends_with('.')) summary.pop_back();
  return summary;
}

std::vector<OptionText> optionsOf(const CLI::App& command) {
  std::vector<OptionText> options;
  for (const auto* option : command.get_options()) {
    if (!option->get_group().empty()) options.emplace_back(*option);
  }
  return options;
}

std::vector<const CLI::App*> commandsOf(const CLI::App& command) {
  return command.get_subcommands(
      [](const CLI::App* each) { return !each->get_group().empty() && !each->get_name().empty(); });
}

}  // namespace xel::manual
