#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace xel::simulation {

/// A text whose escapes of one kind have been read, and which knows where everything stood.
class DecodedText {
 public:
  /// JSON: a backslash and what follows it.
  static DecodedText fromJSON(std::string_view text);
  /// XML: the five named entities, and numbers.
  static DecodedText fromXML(std::string_view text);
  /// URLs: "%2F".
  static DecodedText fromPercent(std::string_view text);

  const std::string& text() const noexcept { return text_; }
  bool hasEscapes() const noexcept { return !escapes_.empty(); }
  /// Where the characters of a range stood, escapes whole.
  /// @param range begin and end, not empty.
  std::pair<std::size_t, std::size_t> source(std::pair<std::size_t, std::size_t> range) const;

 private:
  struct Escape {
    std::size_t begin;
    std::size_t end;
    std::size_t sourceBegin;
    std::size_t sourceEnd;
  };
  /// What an escape at the beginning of a text stands for, and its length; 0 where there is none.
  using Read = std::size_t (*)(std::string_view text, std::string& to);

  static DecodedText from(std::string_view text, char mark, Read read);
  std::size_t sourceOf(std::size_t offset, bool isEnd) const;

  std::string text_;
  std::vector<Escape> escapes_;
};

}  // namespace xel::simulation
