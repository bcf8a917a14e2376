#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace xel::inspect {

/// A place in a text; both count from 1, columns in characters.
struct XMLPlace {
  std::size_t line = 1;
  std::size_t column = 1;
  /// Such as "3:14".
  std::string text() const { return std::to_string(line) + ':' + std::to_string(column); }
};

/// What the library hears of the text in an element: pieces, each taken by itself.
struct XMLPiece {
  enum class Kind { text, reference, cdata };
  Kind kind;
  std::string text;
  XMLPlace place;
  /// Whether it stands behind a nested element.
  bool isBehindElement;

  bool isBlank() const { return text.find_first_not_of(" \t\r\n") == std::string::npos; }
};

struct XMLElement {
  std::string name;
  std::vector<std::pair<std::string, std::string>> attributes;
  XMLPlace place;
  /// Index of the element around it.
  std::optional<std::size_t> parent;
  std::vector<XMLPiece> pieces;
  bool hasElements = false;
  bool isClosed = false;

  /// The pieces that stand before any nested element; only these count.
  struct DirectPieces {
    std::size_t blank = 0;
    std::size_t filled = 0;
    /// Null when there is none.
    const XMLPiece* last = nullptr;
    /// Whether what comes last is the whole text.
    bool isWhole() const { return filled == 1 && !last->isBlank(); }
  };

  std::optional<std::string_view> attribute(std::string_view wanted) const;
  DirectPieces directPieces() const;
};

/// Where and why reading ended before the end.
struct XMLFault {
  XMLPlace place;
  std::string reason;
  bool isOverLimit = false;
};

/// An XML text as far as it is well-formed and within the library's limits, with the place of
/// everything. Nothing outside the text is read.
struct XMLOutline {
  /// @param text UTF-8.
  static XMLOutline read(std::string_view text);

  /// In document order.
  std::vector<XMLElement> elements;
  std::optional<XMLFault> fault;
};

}  // namespace xel::inspect
