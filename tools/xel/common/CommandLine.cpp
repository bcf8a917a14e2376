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

void addMeasurementDomains(CLI::App& command, std::array<std::string, 2>& domains) {
  addRepeatable(command, "--ad-domain", "DOMAIN",
                "A domain whose tracking URLs may be measurement URLs (give two)",
                [&domains](const std::vector<std::string>& given) {
                  if (given.size() != 2 || given[0].empty() || given[1].empty()) {
                    throw CLI::ValidationError("--ad-domain",
                                               "give it exactly twice, or not at all");
                  }
                  domains = {given[0], given[1]};
                });
}

}  // namespace xel
