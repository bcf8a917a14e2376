#include "simulate/SimulationScript.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "common/CommandLine.h"
#include "common/PrintableText.h"
#include "document/GivenDocument.h"

namespace xel::simulate {
namespace {

using Outcome = DocumentAnswer::Outcome;

constexpr double longestSpan = 48 * 3600;

/// Absent where the text is no number of seconds that can be played.
std::optional<double> spanIn(const std::string& text) {
  const double seconds = finiteNumber(text).value_or(-1);
  if (seconds < 0 || seconds > longestSpan) return std::nullopt;
  return seconds;
}

class ScriptReader {
 public:
  ScriptReader(std::filesystem::path folder, const std::string& document)
      : folder_(std::move(folder)) {
    document_.answer.body = document;
  }

  /// Throws std::runtime_error about the line.
  void read(const std::string& line) {
    const auto begin = line.find_first_not_of(" \t\r");
    if (begin == std::string::npos || line[begin] == '#') return;
    const auto end = line.find_first_of(" \t\r", begin);
    const std::string command = line.substr(begin, end - begin);
    if (command == "text") return take(Text{end == std::string::npos ? "" : line.substr(end + 1)});
    const auto rest =
        end == std::string::npos ? std::string::npos : line.find_first_not_of(" \t\r", end);
    std::string argument = rest == std::string::npos ? "" : line.substr(rest);
    argument.erase(argument.find_last_not_of(" \t\r") + 1);
    const bool hasTarget = argument.starts_with("to ");
    if (command == "play" && hasTarget) return take(PlayTo{seconds(argument.substr(3))});
    if (command == "play") return take(PlayFor{seconds(argument)});
    if (command == "seek") return take(SeekTo{seconds(argument)});
    if (command == "pause") return take(Pause{seconds(argument)});
    if (command == "tick") return take(Tick{tick(argument)});
    if (command == "document") return take(documentAnswer(argument));
    throw std::runtime_error(
        '"' + printable(command) +
        "\" is not a step; there are play, seek, pause, tick, text and document");
  }

  std::vector<SimulationStep> steps() { return std::move(steps_); }

 private:
  template <typename Step>
  void take(Step step) {
    steps_.emplace_back(std::move(step));
  }

  static double seconds(const std::string& text) {
    if (const auto span = spanIn(text)) return *span;
    throw std::runtime_error('"' + printable(text) +
                             "\" is not a number of seconds, 0 to 172800 (48 hours)");
  }

  static double tick(const std::string& text) {
    const double span = seconds(text);
    if (span < 0.001) throw std::runtime_error("a tick is 0.001 s or longer");
    return span;
  }

  static int status(const std::string& text) {
    const auto number = finiteNumber(text);
    if (!number || *number < 100 || *number > 599 || *number != static_cast<int>(*number)) {
      throw std::runtime_error('"' + printable(text) + "\" is not an HTTP status, 100 to 599");
    }
    return static_cast<int>(*number);
  }

  DocumentAnswer documentAnswer(const std::string& argument) {
    if (argument == "fails") {
      document_.outcome = Outcome::failed;
    } else if (argument == "hangs") {
      document_.outcome = Outcome::neverAnswered;
    } else if (argument == "answers") {
      document_.outcome = Outcome::answered;
      document_.answer.status = 200;
    } else if (argument.starts_with("after ")) {
      document_.answer.delay = seconds(argument.substr(6));
    } else if (argument.starts_with("status ")) {
      document_.outcome = Outcome::answered;
      document_.answer.status = status(argument.substr(7));
    } else if (argument.starts_with("is ")) {
      const std::filesystem::path file = argument.substr(3);
      document_.answer.body =
          GivenDocument::read((file.is_absolute() ? file : folder_ / file).string()).text;
    } else {
      throw std::runtime_error(
          "\"document " + printable(argument) +
          "\" is not a step; there are document is FILE, after SECONDS, status CODE, "
          "fails, hangs and answers");
    }
    return document_;
  }

  const std::filesystem::path folder_;
  DocumentAnswer document_;
  std::vector<SimulationStep> steps_;
};

std::pair<double, double> spanFrom(const std::string& text) {
  const auto colon = text.find(':');
  if (colon != std::string::npos) {
    const auto from = spanIn(text.substr(0, colon));
    const auto to = spanIn(text.substr(colon + 1));
    if (from && to) return {*from, *to};
  }
  refuse("--play", text,
         "FROM:TO, or AT:TO for a jump, in seconds of stream time up to 172800 (48 hours)");
}

}  // namespace

const char* const scriptLanguage =
    "A script has one step on each line; # begins a comment. Spans and times are seconds:\n"
    "  play 30           play on for 30 s\n"
    "  play to 95        play on to the stream time 95\n"
    "  seek 40           jump to the stream time 40\n"
    "  pause 10          let time pass, as polls do, while the playhead stands still\n"
    "  tick 0.5          report progress every 0.5 s from now on\n"
    "  text TEXT         this text of timed metadata comes now\n"
    "  document after 3  answer requests for the document after 3 s from now on;\n"
    "                    likewise: status 500, fails, hangs, is FILE, and answers (as at first)\n"
    "What is said of tick and document before anything else holds from the beginning.";

std::vector<SimulationStep> stepsOfPlay(const std::string& text) {
  std::vector<SimulationStep> steps;
  std::istringstream spans(text);
  std::string span;
  std::getline(spans, span, ',');
  const auto [from, end] = spanFrom(span);
  if (from > 0) steps.push_back(SeekTo{from});
  double position = from;
  while (std::getline(spans, span, ',')) {
    const auto [at, to] = spanFrom(span);
    steps.push_back(PlayTo{at});
    steps.push_back(SeekTo{to});
    position = to;
  }
  if (end < position) refuse("--play", text, "a span that ends after its beginning and its jumps");
  steps.push_back(PlayTo{end});
  return steps;
}

std::vector<SimulationStep> stepsOfScript(const std::string& file, const std::string& document) {
  std::ifstream script(file);
  if (!script || std::filesystem::is_directory(file)) {
    throw std::runtime_error(file + " cannot be read");
  }
  ScriptReader reader(std::filesystem::path(file).parent_path(), document);
  std::string line;
  for (int number = 1; std::getline(script, line); ++number) {
    try {
      reader.read(line);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(file + ":" + std::to_string(number) + ": " + error.what());
    }
  }
  return reader.steps();
}

}  // namespace xel::simulate
