#include "manual/ManualCommand.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "xel/platform/Environment.h"

#include "manual/BashCompletion.h"
#include "manual/ManualPage.h"

namespace xel {
namespace {

void write(const std::filesystem::path& file, const std::string& text) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  if (!stream.flush()) throw std::runtime_error(file.string() + " cannot be written");
}

void writeManual(const CLI::App& program, const std::filesystem::path& folder) {
  const auto version = makeLinuxEnvironment({})->libraryVersion().value_or("");
  for (const auto& page : manual::manualPages(program, version)) {
    write(folder / "man1" / (page.name + ".1"), page.text);
  }
  write(folder / "bash-completion" / program.get_name(), manual::bashCompletion(program));
}

}  // namespace

void registerManual(CLI::App& app, int& exitStatus) {
  const auto folder = std::make_shared<std::string>();
  CLI::App& command = *app.add_subcommand("manual", "Write the manual pages and the completion");
  command.group("");
  command.add_option("FOLDER", *folder, "Where to write them")->required();
  command.callback([&app, folder, &exitStatus] {
    writeManual(app, *folder);
    exitStatus = 0;
  });
}

}  // namespace xel
