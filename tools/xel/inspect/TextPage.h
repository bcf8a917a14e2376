#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "inspect/RuleTable.h"

namespace xel::inspect {

/// Text for people that grows line by line. What is given may come from outside: control characters
/// are replaced.
class TextPage {
 public:
  static constexpr std::size_t width = 100;

  explicit TextPage(bool inColour) : inColour_(inColour) {}

  /// A heading after an empty line.
  void heading(std::string_view text);
  /// One line, however long.
  void line(std::size_t indent, std::string_view text);
  /// A label and, in a column of its own, a text that goes on in that column.
  void field(std::size_t indent, std::string_view label, std::size_t labelWidth,
             std::string_view text);
  /// As many lines as the text needs.
  void paragraph(std::size_t indent, std::string_view text);
  /// The severity and id of a rule, behind a label.
  void rule(std::size_t indent, std::string_view label, Severity severity, std::string_view id);

  const std::string& text() const noexcept { return text_; }

 private:
  std::string styled(std::string_view style, std::string_view text) const;

  const bool inColour_;
  std::string text_;
};

}  // namespace xel::inspect
