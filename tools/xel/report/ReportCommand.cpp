#include "report/ReportCommand.h"

#include <cstdio>
#include <memory>
#include <string>

#ifdef XEL_HAS_REPORT
#include "report/ReportFile.h"
#endif

namespace xel {
namespace {

constexpr auto examplesAndExitStatuses =
    "Examples:\n"
    "  xel play vod --content-source-id shows --video-id 1 --server localhost:8443 \\\n"
    "      --ca-file ca.pem --record session.jsonl\n"
    "  xel report session.jsonl -o session.html\n\n"
    "Exit status:\n"
    "  0  the page was written\n"
    "  1  it could not be written\n"
    "  2  wrong usage, or the trace cannot be read";

struct ReportOptions {
  std::string trace;
  std::string page = "report.html";
};

}  // namespace

#ifdef XEL_HAS_REPORT
bool canReport() { return true; }

int makeReport(const std::string& trace, const std::string& page) {
  return report::writeReport(trace, page);
}
#else
bool canReport() { return false; }

int makeReport(const std::string&, const std::string&) {
  std::fputs("xel: this xel was built without reports; build it with Node.js and npm installed\n",
             stderr);
  return 1;
}
#endif

void registerReport(CLI::App& app, int& exitStatus) {
  auto* command = app.add_subcommand("report", "Show a recorded session as an HTML page");
  const auto options = std::make_shared<ReportOptions>();
  command->add_option("FILE", options->trace, "The trace of the session; - is standard input")
      ->required()
      ->type_name("");
  command->add_option("-o,--output", options->page, "Where to write the page; - is standard output")
      ->type_name("PAGE")
      ->capture_default_str();
  command->footer(examplesAndExitStatuses);
  command->callback(
      [options, &exitStatus] { exitStatus = makeReport(options->trace, options->page); });
}

}  // namespace xel
