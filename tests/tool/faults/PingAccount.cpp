#include "tool/faults/PingAccount.h"

namespace xel::serve {

void PingAccount::promise(const Promise& promise, const std::set<std::string>& startedAds) {
  for (const auto& ping : promise.pings) {
    eventOf_[ping.target] = ping.event;
    if (startedAds.count(ping.ad) != 0) ++events_[ping.event].promised;
  }
}

void PingAccount::takeLedger(const JSONValue& ledger, const std::string& faultThatCuts) {
  for (const auto& entry : ledger.elements()) {
    const std::string target(entry["target"].text().value_or(""));
    const bool isAnswered = entry["status"].integer().value_or(500) < 300 &&
                            entry["fault"].text().value_or("") != faultThatCuts;
    if (!target.starts_with("/track/") || !isAnswered) continue;
    const auto event = eventOf_.find(comparableTarget(target));
    ++events_[event == eventOf_.end() ? target : event->second].accepted;
  }
}

void PingAccount::takeLog(const std::vector<std::string>& lines) {
  const std::string failure = "Internal Error: Tracking ping failed for event: ";
  for (const auto& line : lines) {
    ++events_[line.starts_with(failure) ? line.substr(failure.size()) : line].logged;
  }
}

std::vector<std::string> PingAccount::unaccounted() const {
  std::vector<std::string> lines;
  for (const auto& [event, counts] : events_) {
    if (counts.promised == counts.accepted + counts.logged) continue;
    lines.push_back(event + ": " + std::to_string(counts.promised) + " promised, " +
                    std::to_string(counts.accepted) + " accepted, " +
                    std::to_string(counts.logged) + " logged");
  }
  return lines;
}

int PingAccount::sum(int Counts::*count) const {
  int sum = 0;
  for (const auto& [event, counts] : events_) sum += counts.*count;
  return sum;
}

}  // namespace xel::serve
