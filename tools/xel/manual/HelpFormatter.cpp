#include "manual/HelpFormatter.h"

#include <sstream>

#include "manual/OptionText.h"

namespace xel::manual {

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  const OptionText text(*option);
  auto shown = text.valueName.empty() ? "" : " " + text.valueName;
  if (text.isRepeatable) shown += " ...";
  return shown;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
  const OptionText text(*option);
  return text.description + (text.isRequired && !text.isPositional ? " (required)" : "");
}

std::string HelpFormatter::make_subcommand(const CLI::App* command) const {
  std::ostringstream line;
  CLI::detail::format_help(line, command->get_name(), summaryOf(*command), get_column_width());
  return line.str();
}

}  // namespace xel::manual
