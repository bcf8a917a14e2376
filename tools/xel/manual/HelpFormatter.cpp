#include "manual/HelpFormatter.h"

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

}  // namespace xel::manual
