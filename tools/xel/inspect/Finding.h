#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "inspect/RuleTable.h"

namespace xel::inspect {

/// What is to be said about one place in a document.
struct Finding {
  /// The id of the rule, valid for ever.
  std::string_view rule;
  Severity severity;
  /// A JSON path, a line and column of the XML ("3:14"), or both with a space between.
  std::string place;
  /// One sentence: what happens with this document.
  std::string text;

  /// What to do about it.
  std::string_view remedy() const { return ruleTable[ruleIndex(rule)].remedy; }
};

/// Collects findings, each with the severity that its rule has.
class Findings {
 public:
  void add(RuleID rule, std::string place, std::string text) {
    const auto& entry = ruleTable[rule.index];
    list_.push_back({entry.id, entry.severity, std::move(place), std::move(text)});
  }
  const std::vector<Finding>& list() const noexcept { return list_; }
  std::vector<Finding> take() { return std::exchange(list_, {}); }

 private:
  std::vector<Finding> list_;
};

}  // namespace xel::inspect
