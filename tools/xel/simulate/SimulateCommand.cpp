#include "simulate/SimulateCommand.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/CommandLine.h"
#include "common/PrintableText.h"
#include "document/GivenDocument.h"
#include "simulate/Simulation.h"
#include "simulate/SimulationOutput.h"
#include "simulate/SimulationScript.h"
#include "simulate/TextSchedule.h"

namespace xel {
namespace {

constexpr auto description =
    "Play a stream info document without network and player, and say which events fire and why the "
    "others do not";

constexpr auto details =
    "Examples:\n"
    "  xel simulate breaks.json                       the whole stream\n"
    "  xel simulate breaks.json --play 0:600,25:90    from 0 to 600, with a jump from 25 to 90\n"
    "  xel simulate breaks.json --script seeks.txt\n\n"
    "A live document does not say when its texts of timed metadata come: without a script they\n"
    "come as if its breaks followed each other from second 10 on, 30 s apart.\n\n";

constexpr auto exitStatuses =
    "\n\nExit status:\n"
    "  0    the session was simulated, whatever fired\n"
    "  2    wrong usage, or a file that cannot be read";

struct SimulateOptions {
  std::string file;
  std::string script;
  std::vector<simulate::SimulationStep> steps;
  std::optional<bool> isLive;
  std::optional<double> tick;
  std::optional<double> documentDelay;
  simulate::SimulationSettings settings;
  bool json = false;
};

/// The end of the last event and cue point, and a little more.
double endOf(const StreamDocument& document, const simulate::SimulationSettings& settings) {
  double last = settings.texts.empty() ? 0 : settings.texts.back().first;
  for (const auto& second : document.seconds) {
    if (second.second) last = std::max(last, static_cast<double>(*second.second));
  }
  for (const auto& cuepoint : document.cuepoints) last = std::max(last, cuepoint.end.value_or(0));
  constexpr double longest = 48 * 3600;
  return std::min(last, longest) + 10;
}

GivenDocument documentFrom(const std::string& file) {
  auto given = GivenDocument::read(file);
  if (given.value["stream_manifest"].text() || given.value["stream_id"].text()) {
    throw std::runtime_error(
        file +
        " is the answer to a stream request; give the stream info document that its "
        "time_events_url or id3_events_url names");
  }
  static const std::set<std::string_view> sections = {"ads", "breaks", "tags", "times",
                                                      "cuepoints"};
  bool hasSection = false;
  given.value.forEachMember([&hasSection](std::string_view name, const JSONValue&) {
    hasSection = hasSection || sections.contains(name);
  });
  if (!hasSection) {
    throw std::runtime_error(file +
                             " is no stream info document: it has none of ads, breaks, tags, times "
                             "and cuepoints");
  }
  return given;
}

std::vector<simulate::SimulationStep> stepsFor(const SimulateOptions& options,
                                               const StreamDocument& document,
                                               const simulate::SimulationSettings& settings,
                                               const std::string& text) {
  std::vector<simulate::SimulationStep> steps;
  if (options.tick) steps.push_back(simulate::Tick{*options.tick});
  if (options.documentDelay) {
    steps.push_back(simulate::DocumentAnswer{.answer = {200, text, *options.documentDelay}});
  }
  auto given =
      options.script.empty() ? options.steps : simulate::stepsOfScript(options.script, text);
  if (given.empty()) given.push_back(simulate::PlayTo{endOf(document, settings)});
  steps.insert(steps.end(), given.begin(), given.end());
  return steps;
}

int simulateSession(const SimulateOptions& options) {
  try {
    const auto given = documentFrom(options.file);
    const auto document = StreamDocument::read(given.value);
    auto settings = options.settings;
    settings.isLive = options.isLive.value_or(document.kind == StreamDocument::Kind::live);
    if (settings.isLive && options.script.empty())
      settings.texts = simulate::scheduleTexts(document);
    const auto steps = stepsFor(options, document, settings, given.text);

    std::unique_ptr<simulate::SimulationOutput> output;
    if (options.json) {
      output = std::make_unique<simulate::SimulationJSON>(stdout);
    } else {
      output = std::make_unique<simulate::SimulationText>(stdout);
    }
    simulate::Simulation simulation(given.text, std::move(settings), *output);
    simulation.run(steps);
    output->conclude(simulation.documentEvents());
    return 0;
  } catch (const std::runtime_error& error) {
    std::fprintf(stderr, "xel: %s\n", printable(error.what()).c_str());
    return 2;
  }
}

double positive(const std::string& option, const std::string& text, double least) {
  const auto number = finiteNumber(text);
  if (!number || *number < least) refuse(option, text, "a number of seconds that is large enough");
  return *number;
}

}  // namespace

void registerSimulate(CLI::App& app, int& exitStatus) {
  const auto options = std::make_shared<SimulateOptions>();
  CLI::App& command = *app.add_subcommand("simulate", description);
  command.footer(std::string(details) + simulate::scriptLanguage + exitStatuses);
  command
      .add_option("DOCUMENT", options->file,
                  "Stream info document (JSON file; - is standard input)")
      ->required();
  auto* const play =
      addText(command, "--play", "FROM:TO[,AT:TO...]",
              "Stream times to play, with jumps (default: the whole stream)",
              [options](const std::string& text) { options->steps = simulate::stepsOfPlay(text); });
  command.add_option("--script", options->script, "What happens, step by step (file)")
      ->check(CLI::ExistingFile)
      ->excludes(play);
  auto* const live = command.add_flag_callback(
      "--live", [options] { options->isLive = true; }, "Take the document for a live stream's");
  command
      .add_flag_callback(
          "--vod", [options] { options->isLive = false; },
          "Take the document for an on-demand stream's")
      ->excludes(live);
  addText(command, "--tick", "SECONDS", "Span between two progress reports (default: 0.2)",
          [options](const std::string& text) { options->tick = positive("--tick", text, 0.001); });
  addText(command, "--document-delay", "SECONDS", "How late the document comes (default: 0)",
          [options](const std::string& text) {
            options->documentDelay = positive("--document-delay", text, 0);
          });
  addText(command, "--polling", "SECONDS",
          "Span between two polls of a live document (default: 10)",
          [options](const std::string& text) {
            options->settings.pollingPeriod = positive("--polling", text, 0.1);
          });
  addMeasurementDomains(command, options->settings.measurementDomains);
  command.add_flag("--json", options->json, "One JSON object a line on standard output");
  command.callback([options, &exitStatus] { exitStatus = simulateSession(*options); });
}

}  // namespace xel
