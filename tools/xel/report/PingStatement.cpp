#include <algorithm>

#include "report/ReportModel.h"

namespace xel::report {
namespace {

std::string pings(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " ping" : " pings");
}

}  // namespace

std::string pingStatement(const Report& report) {
  const auto count = [&report](PingOutcome outcome) {
    return static_cast<std::size_t>(
        std::count_if(report.pings.begin(), report.pings.end(),
                      [outcome](const Ping& ping) { return ping.outcome == outcome; }));
  };
  const auto total = report.pings.size();
  const auto failed = count(PingOutcome::failed);
  const auto unanswered = count(PingOutcome::unanswered);
  if (total == 0) return "No ping was sent.";
  if (failed + unanswered == 0) {
    if (total == 1) return "The only ping was accepted.";
    return (total == 2 ? "Both" : "All " + std::to_string(total)) + " pings were accepted.";
  }
  const auto of = " of " + pings(total);
  if (failed == 0) return std::to_string(unanswered) + of + " got no answer.";
  const auto lost = unanswered == 0 ? "" : ", " + std::to_string(unanswered) + " got no answer";
  return std::to_string(failed) + of + " failed" + lost + ".";
}

}  // namespace xel::report
