#include "report/ReportFile.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string_view>
#include <system_error>

#include "xel/simulation/TraceReader.h"

#include "common/PrintableText.h"
#include "common/Progress.h"
#include "report/ReportBuilder.h"
#include "report/ReportPage.h"

namespace xel::report {
namespace {

constexpr int done = 0;
constexpr int notWritten = 1;
constexpr int notReadable = 2;

void say(const std::string& text) {
  std::fputs(("xel: " + printable(text) + '\n').c_str(), stderr);
}

/// Absent, with a message, when the trace cannot be read to its end.
std::optional<Report> readTrace(std::istream& in, const std::string& name, std::uintmax_t size) {
  simulation::TraceReader reader(in);
  Progress progress("reading the trace");
  ReportBuilder builder(reader.header());
  while (const auto line = reader.next()) {
    builder.add(*line);
    constexpr std::size_t linesPerLook = 1024;
    if (size > 0 && line->number % linesPerLook == 0) {
      progress.show(static_cast<std::size_t>(in.tellg()), size);
    }
  }
  if (reader.fault()) {
    say(reader.fault()->text(name));
    return std::nullopt;
  }
  return builder.finish(reader.isCutOff());
}

std::optional<Report> readTrace(const std::string& trace) {
  if (trace == "-") return readTrace(std::cin, "standard input", 0);
  std::ifstream file(trace, std::ios::binary);
  if (!file || std::filesystem::is_directory(trace)) {
    say("\"" + trace + "\" cannot be read; give a file that xel play --record has written");
    return std::nullopt;
  }
  std::error_code unknown;
  const auto size = std::filesystem::file_size(trace, unknown);
  return readTrace(file, trace, unknown ? 0 : size);
}

/// The file gets its name when it is whole, so that no half a page replaces an older one.
bool writePage(const std::string& name, const std::string& text) {
  if (name == "-") return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  const auto unfinished = name + ".part";
  std::ofstream file(unfinished, std::ios::binary);
  file << text;
  file.close();
  std::error_code failure;
  if (file) std::filesystem::rename(unfinished, name, failure);
  if (file && !failure) return true;
  std::filesystem::remove(unfinished, failure);
  return false;
}

}  // namespace

int writeReport(const std::string& trace, const std::string& page) {
  const auto report = readTrace(trace);
  if (!report) return notReadable;
  if (!writePage(page, pageOf(*report))) {
    say("\"" + page + "\" could not be written");
    return notWritten;
  }
  if (page != "-") say(page + ": " + pingStatement(*report));
  return done;
}

}  // namespace xel::report
