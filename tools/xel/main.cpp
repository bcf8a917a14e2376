#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "xel/platform/Environment.h"

#include "common/PrintableText.h"
#include "inspect/InspectCommand.h"
#include "manual/HelpFormatter.h"
#include "manual/ManualCommand.h"
#include "manual/OptionText.h"
#include "play/PlayCommand.h"
#include "replay/ReplayCommand.h"
#include "report/ReportCommand.h"
#include "serve/ServeCommand.h"
#include "simulate/SimulateCommand.h"

namespace {

constexpr int wrongUsage = 2;

constexpr auto examplesAndExitStatuses =
    "Examples:\n"
    "  xel serve\n"
    "  xel play live --asset-key news --server localhost:8443 --ca-file ca.pem\n"
    "  xel inspect ad.xml\n"
    "  xel play --help\n\n"
    "Exit status:\n"
    "  0  all is well\n"
    "  1  something was found, or failed\n"
    "  2  wrong usage";

/// The command as far as it was understood, such as "xel play vod".
std::string commandText(const CLI::App& app) {
  auto text = app.get_name();
  for (const auto* command : app.get_subcommands()) text += ' ' + commandText(*command);
  return text;
}

/// "play, simulate or serve", where one of these commands is missing; empty where none is.
std::string missingCommand(const CLI::App& app) {
  for (const auto* command : app.get_subcommands()) return missingCommand(*command);
  std::string names;
  const auto commands = xel::manual::commandsOf(app);
  for (const auto* command : commands) {
    const auto* const before = names.empty() ? "" : command == commands.back() ? " or " : ", ";
    names += before + command->get_name();
  }
  return names;
}

std::string usageText(const CLI::App& app, const CLI::ParseError& error) {
  auto problem = xel::printable(error.what());
  const auto rest = app.remaining(true);
  const auto first = rest.empty() ? "" : '"' + xel::printable(rest.front()) + '"';
  if (const auto commands = missingCommand(app); !commands.empty()) {
    problem = (rest.empty() ? "the command is missing" : first + " is not a command") + "; give " +
              commands;
  } else if (!rest.empty()) {
    problem = first + " was not expected";
  }
  return "xel: " + problem + " (see " + commandText(app) + " --help)\n";
}

int run(int argc, char** argv) {
  CLI::App app("Plays ad-inserted streams, shows what happens in them, and serves some to play",
               "xel");
  app.require_subcommand(1);
  app.formatter(std::make_shared<xel::manual::HelpFormatter>());
  app.footer(examplesAndExitStatuses);
  app.set_version_flag("--version", xel::makeLinuxEnvironment({})->libraryVersion().value_or(""));

  int exitStatus = 0;
  xel::registerPlay(app, exitStatus);
  xel::registerReplay(app, exitStatus);
  xel::registerInspect(app, exitStatus);
  xel::registerSimulate(app, exitStatus);
  xel::registerReport(app, exitStatus);
  xel::registerServe(app, exitStatus);
  xel::registerManual(app, exitStatus);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::fputs(usageText(app, error).c_str(), stderr);
    return wrongUsage;
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fputs("xel: standard output could not be written\n", stderr);
    return 1;
  }
  return exitStatus;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "xel: %s\n", error.what());
    return 1;
  }
}
