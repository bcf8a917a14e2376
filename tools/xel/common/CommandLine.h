#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace xel {

// What the subcommands share to describe their options. A value that is refused throws
// `CLI::ValidationError`, which ends the program as wrong usage.

/// Refuses a value: "TEXT" is not WANTED.
[[noreturn]] void refuse(const std::string& option, const std::string& text,
                         const std::string& wanted);

/// The whole text as a number, in the form that JSON and C++ have; absent where it is none.
std::optional<double> finiteNumber(std::string_view text);

/// An option with a value that `take` checks.
CLI::Option* addText(CLI::App& command, const std::string& name, const std::string& valueName,
                     const std::string& description,
                     const std::function<void(const std::string&)>& take);

/// An option that is given several times, with one value each time.
CLI::Option* addRepeatable(CLI::App& command, const std::string& name, const std::string& valueName,
                           const std::string& description,
                           const std::function<void(const std::vector<std::string>&)>& take);

/// The option --ad-domain, for the domains of measurement URLs.
void addMeasurementDomains(CLI::App& command, std::array<std::string, 2>& domains);

}  // namespace xel
