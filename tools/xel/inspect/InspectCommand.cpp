#include "inspect/InspectCommand.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

#include "common/CommandLine.h"
#include "common/PrintableText.h"
#include "common/Progress.h"
#include "inspect/Inspection.h"
#include "inspect/JSONReport.h"
#include "inspect/TextReport.h"

namespace xel {
namespace {

constexpr auto description = "Show what the client makes of documents, and what is lost in them";

constexpr auto footer =
    "Each file is an answer to a stream request, a stream info document, a VAST document, or a\n"
    "trace. Shown are its breaks and ads, and for each event the pings as they would go out; then\n"
    "what is lost, or likely not what was meant, with the place and the remedy.\n\n"
    "Examples:\n"
    "  xel inspect ad.xml\n"
    "  curl -s https://ssai.example.com/info.json | xel inspect -\n"
    "  xel inspect --strict --json vast/*.xml > findings.jsonl\n"
    "  xel inspect --rules\n\n"
    "Exit status:\n"
    "  0  nothing is lost: no errors, and with --strict no warnings\n"
    "  1  there are some\n"
    "  2  wrong usage, or a file that is none of these documents";

constexpr int foundSomething = 1;
constexpr int cannotInspect = 2;

struct InspectOptions {
  std::vector<std::string> files;
  inspect::ClientFacts facts;
  bool json = false;
  bool strict = false;
  bool rules = false;
};

bool isInColour() { return isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr; }

/// Throws std::runtime_error when it cannot be read.
std::string contentsOf(const std::string& file) {
  struct Closer {
    void operator()(std::FILE* open) const { std::fclose(open); }
  };
  errno = 0;
  std::unique_ptr<std::FILE, Closer> opened(file == "-" ? nullptr : std::fopen(file.c_str(), "rb"));
  auto* const in = file == "-" ? stdin : opened.get();
  std::string text;
  if (in) {
    std::vector<char> chunk(std::size_t{1} << 16);
    while (const auto length = std::fread(chunk.data(), 1, chunk.size(), in)) {
      text.append(chunk.data(), length);
    }
  }
  if (!in || std::ferror(in) != 0) {
    throw std::runtime_error(std::string("it cannot be read: ") + std::strerror(errno));
  }
  return text;
}

void print(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

int inspectFile(const std::string& file, const InspectOptions& options) {
  try {
    const auto inspection = inspect::inspect(contentsOf(file), options.facts);
    const auto counts = inspection.counts();
    if (options.json) {
      print(inspect::jsonReport(file, inspection) + '\n');
    } else {
      if (options.files.size() > 1) print("== " + printable(file) + '\n');
      print(inspect::textReport(inspection, isInColour()) + '\n' + inspect::countsText(counts) +
            '\n');
      if (options.files.size() > 1) print("\n");
    }
    const bool isWorse = options.strict && counts.warnings > 0;
    return counts.errors > 0 || isWorse ? foundSomething : 0;
  } catch (const std::runtime_error& error) {
    const auto name = file == "-" ? "standard input" : printable(file);
    std::fprintf(stderr, "xel inspect: %s: %s\n", name.c_str(), printable(error.what()).c_str());
    return cannotInspect;
  }
}

int run(const InspectOptions& options) {
  if (options.rules) {
    print(options.json ? inspect::jsonRules() + '\n' : inspect::textRules(isInColour()));
    return 0;
  }
  if (options.files.empty()) throw CLI::RequiredError("FILE");
  std::optional<Progress> progress;
  if (options.files.size() > 1 && isatty(STDOUT_FILENO) == 0) progress.emplace("inspecting");
  int exitStatus = 0;
  for (std::size_t i = 0; i < options.files.size(); ++i) {
    if (progress) progress->show(i, options.files.size());
    exitStatus = std::max(exitStatus, inspectFile(options.files[i], options));
  }
  return exitStatus;
}

}  // namespace

void registerInspect(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<InspectOptions>();
  CLI::App& command = *app.add_subcommand("inspect", description);
  command.add_option("FILE", options->files, "Documents to inspect; - is standard input")
      ->type_name("");
  command.add_flag("--json", options->json, "One JSON object for each file, on a line of its own");
  command.add_flag("--strict", options->strict, "Leave 1 for warnings too");
  command.add_flag("--rules", options->rules, "List the rules instead");
  addText(command, "--app-id", "ID", "The application that measurement pings name",
          [options](const std::string& text) { options->facts.applicationIdentifier = text; });
  addText(command, "--manifest-suffix", "TEXT", "The manifest URL suffix of the stream request",
          [options](const std::string& text) { options->facts.manifestSuffix = text; });
  addMeasurementDomains(command, options->facts.measurementDomains);
  command.footer(footer);
  command.callback([options, &exitStatus] { exitStatus = run(*options); });
}

}  // namespace xel
