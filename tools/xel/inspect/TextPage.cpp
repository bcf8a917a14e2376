#include "inspect/TextPage.h"

#include <algorithm>

#include "common/PrintableText.h"

namespace xel::inspect {
namespace {

constexpr std::string_view bold = "1";

std::string_view colourOf(Severity severity) {
  return severity == Severity::error ? "31" : severity == Severity::warning ? "33" : "36";
}

std::string padded(std::string_view text, std::size_t length) {
  std::string result(text);
  result.resize(std::max(length, result.size()), ' ');
  return result;
}

}  // namespace

void TextPage::heading(std::string_view text) {
  if (!text_.empty()) text_ += '\n';
  text_ += styled(bold, printable(text)) + '\n';
}

void TextPage::line(std::size_t indent, std::string_view text) {
  text_ += std::string(indent, ' ') + printable(text) + '\n';
}

void TextPage::field(std::size_t indent, std::string_view label, std::size_t labelWidth,
                     std::string_view text) {
  const auto begin = text_.size() + indent;
  paragraph(indent + labelWidth, text);
  text_.replace(begin, std::min(label.size(), labelWidth), label.substr(0, labelWidth));
}

void TextPage::paragraph(std::size_t indent, std::string_view text) {
  auto rest = printable(text);
  const std::size_t room = width - indent;
  while (rest.size() > room) {
    auto end = rest.rfind(' ', room);
    if (end == std::string::npos || end == 0) end = rest.find(' ', room);
    if (end == std::string::npos) break;
    text_ += std::string(indent, ' ') + rest.substr(0, end) + '\n';
    rest.erase(0, end + 1);
  }
  text_ += std::string(indent, ' ') + rest + '\n';
}

void TextPage::rule(std::size_t indent, std::string_view label, Severity severity,
                    std::string_view id) {
  constexpr std::size_t severityWidth = 9;
  text_ += std::string(indent, ' ') + std::string(label) +
           styled(colourOf(severity), padded(severityName(severity), severityWidth)) +
           styled(bold, id) + '\n';
}

std::string TextPage::styled(std::string_view style, std::string_view text) const {
  if (!inColour_) return std::string(text);
  return "\x1B[" + std::string(style) + 'm' + std::string(text) + "\x1B[0m";
}

}  // namespace xel::inspect
