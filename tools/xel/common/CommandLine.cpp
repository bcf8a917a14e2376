#include "common/CommandLine.h"

#include <charconv>
#include <cmath>

namespace xel {

void refuse(const std::string& option, const std::string& text, const std::string& wanted) {
  throw CLI::ValidationError(option, "\"" + text + "\" is not " + wanted);
}

std::optional<double> finiteNumber(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(number)) {
    return std::nullopt;
  }
  return number;
}

CLI::Option* addText(CLI::App& command, const std::string& name, const std::string& valueName,
                     const std::string& description,
                     const std::function<void(const std::string&)>& take) {
  return command.add_option_function<std::string>(name, take, description)->type_name(valueName);
}

CLI::Option* addRepeatable(CLI::App& command, const std::string& name, const std::string& valueName,
                           const std::string& description,
                           const std::function<void(const std::vector<std::string>&)>& take) {
  return command.add_option_function<std::vector<std::string>>(name, take, description)
      ->allow_extra_args(false)
      ->type_name(valueName);
}

}  // namespace xel
