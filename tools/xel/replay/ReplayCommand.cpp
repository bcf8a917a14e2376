#include "replay/ReplayCommand.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "xel/simulation/JSONWriter.h"
#include "xel/simulation/TraceReplay.h"

#include "common/PrintableText.h"

namespace xel {
namespace {

using simulation::TraceReplayResult;

constexpr auto description =
    "Run a recorded session through the library again, and compare\n\n"
    "Without network, player or wait: the library is told what the trace says, and must do what\n"
    "the trace says: the same delegate calls, pings, other requests, loads and timers.";

constexpr auto footer =
    "Examples:\n"
    "  xel play vod --content-source-id shows --video-id 1 --record session.jsonl\n"
    "  xel replay session.jsonl\n\n"
    "Exit status:\n"
    "  0  identical\n"
    "  1  there are differences\n"
    "  2  wrong usage, or the file is no trace";

struct ReplayOptions {
  std::string file;
  bool json = false;
};

std::string countText(std::size_t count, const std::string& what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

void print(const TraceReplayResult& result) {
  for (const auto& difference : result.differences) {
    std::printf("%s\n", printable(difference.text()).c_str());
  }
  if (const auto more = result.differenceCount - result.differences.size(); more > 0) {
    std::printf("and %s\n", countText(more, "more difference").c_str());
  }
  if (result.isIdentical()) {
    std::printf("identical: %s, %s\n", countText(result.delegateCalls, "delegate call").c_str(),
                countText(result.pings, "ping").c_str());
  }
}

void printJSON(const TraceReplayResult& result) {
  simulation::JSONWriter line;
  line.beginObject().member("identical", result.isIdentical());
  line.member("delegateCalls", result.delegateCalls).member("pings", result.pings);
  line.member("differenceCount", result.differenceCount);
  line.name("differences").beginArray();
  for (const auto& [number, expected, got] : result.differences) {
    line.beginObject().member("line", number).member("expected", expected).member("got", got);
    line.endObject();
  }
  line.endArray().member("isCutOff", result.cutOffLine > 0);
  std::printf("%s\n", line.endObject().text().c_str());
}

int replay(const ReplayOptions& options) {
  const bool isStandardInput = options.file == "-";
  const auto name = isStandardInput ? "standard input" : printable(options.file);
  std::ifstream file;
  if (!isStandardInput) {
    file.open(options.file, std::ios::binary);
    const bool isFolder = std::filesystem::is_directory(options.file);
    if (!file || isFolder) {
      std::fprintf(stderr, "xel: %s cannot be read: %s\n", name.c_str(),
                   std::strerror(isFolder ? EISDIR : errno));
      return 2;
    }
  }
  const auto result = simulation::replayTrace(isStandardInput ? std::cin : file);
  if (result.fault) {
    std::fprintf(stderr, "xel: %s\n", printable(result.fault->text(name)).c_str());
  } else if (result.cutOffLine > 0) {
    std::fprintf(stderr, "xel: %s, line %zu, is cut off; replayed up to there\n", name.c_str(),
                 result.cutOffLine);
  }
  if (options.json) {
    printJSON(result);
  } else {
    print(result);
  }
  if (result.fault) return 2;
  return result.isIdentical() ? 0 : 1;
}

}  // namespace

void registerReplay(CLI::App& app, int& exitStatus) {
  auto& command = *app.add_subcommand("replay", description);
  const auto options = std::make_shared<ReplayOptions>();
  command.add_option("FILE", options->file, "The trace; - is standard input")->required();
  command.add_flag("--json", options->json, "One JSON object on standard output");
  command.footer(footer);
  command.callback([options, &exitStatus] { exitStatus = replay(*options); });
}

}  // namespace xel
