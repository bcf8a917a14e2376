#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace xel::manual {

/// Writes help with the same texts for options as the manual pages, and with one line for each
/// command below.
class HelpFormatter final : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
  std::string make_subcommand(const CLI::App* command) const override;
};

}  // namespace xel::manual
