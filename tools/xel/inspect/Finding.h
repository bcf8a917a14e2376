#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "inspect/RuleTable.h"
#include "inspect/XMLOutline.h"

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
  /// The line and column; 0 for a place in JSON.
  XMLPlace xml = {0, 0};

  bool isInXML() const { return xml.line > 0; }
  /// What to do about it.
  std::string_view remedy() const { return ruleTable[ruleIndex(rule)].remedy; }
};

/// Collects findings, each with the severity that its rule has.
class Findings {
 public:
  /// @param path of a value in a JSON document.
  void add(RuleID rule, std::string path, std::string text) {
    const auto& entry = ruleTable[rule.index];
    list_.push_back({entry.id, entry.severity, std::move(path), std::move(text)});
  }
  /// @param path of the XML text in a JSON document; empty for an XML document of its own.
  void add(RuleID rule, const std::string& path, XMLPlace xml, std::string text) {
    add(rule, path.empty() ? xml.text() : path + ' ' + xml.text(), std::move(text));
    list_.back().xml = xml;
  }
  /// Adds findings of one XML text, in the order of their places.
  void addByPlace(std::vector<Finding> findings) {
    std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
      return std::tie(a.xml.line, a.xml.column) < std::tie(b.xml.line, b.xml.column);
    });
    std::move(findings.begin(), findings.end(), std::back_inserter(list_));
  }
  std::vector<Finding> take() { return std::exchange(list_, {}); }

 private:
  std::vector<Finding> list_;
};

}  // namespace xel::inspect
