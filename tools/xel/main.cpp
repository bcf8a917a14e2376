#include <cstdio>
#include <exception>
#include <string>

#include <CLI/CLI.hpp>

#include "xel/platform/Environment.h"

#include "EventText.h"
#include "PlayCommand.h"
#include "ServeCommand.h"

namespace {

constexpr int wrongUsage = 2;

/// The command as far as it was understood, such as "xel play vod".
std::string commandText(const CLI::App& app) {
  auto text = app.get_name();
  for (const auto* command : app.get_subcommands()) text += ' ' + commandText(*command);
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Plays ad-inserted streams, and serves some to play.", "xel");
  app.require_subcommand(1);
  app.set_version_flag("--version", xel::makeLinuxEnvironment({})->libraryVersion().value_or(""));

  int exitStatus = 0;
  try {
    xel::registerPlay(app, exitStatus);
    xel::registerServe(app, exitStatus);
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    const auto message = xel::printable(error.what());
    std::fprintf(stderr, "xel: %s (see %s --help)\n", message.c_str(), commandText(app).c_str());
    return wrongUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "xel: %s\n", error.what());
    return 1;
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fputs("xel: standard output could not be written\n", stderr);
    return 1;
  }
  return exitStatus;
}
