#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "xel/platform/JSONValue.h"

#include "serve/PromisedPings.h"

namespace xel::serve {

/// For each tracking event, what was promised of the ads that started, and what became of it.
class PingAccount {
 public:
  void promise(const Promise& promise, const std::set<std::string>& startedAds);
  /// Takes what was answered with success.
  /// @param faultThatCuts one whose answers do not arrive, whatever their status.
  void takeLedger(const JSONValue& ledger, const std::string& faultThatCuts);
  /// Takes what was logged as failed; any other line counts for an event of its own.
  void takeLog(const std::vector<std::string>& lines);

  /// A line for each event whose pings were not all either accepted, or failed and logged.
  std::vector<std::string> unaccounted() const;
  int promised() const { return sum(&Counts::promised); }
  int logged() const { return sum(&Counts::logged); }

 private:
  struct Counts {
    int promised = 0, accepted = 0, logged = 0;
  };
  int sum(int Counts::*count) const;

  std::map<std::string, Counts> events_;
  std::map<std::string, std::string> eventOf_;
};

}  // namespace xel::serve
