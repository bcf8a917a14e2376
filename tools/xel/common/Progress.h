#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace xel {

/// One line about long work on a terminal, such as "making media: 3 of 6"; it is gone when the work
/// is done. Nothing is written to what is not a terminal.
///
/// Not thread-safe.
class Progress {
 public:
  /// @param work what is being done, such as "making media".
  explicit Progress(std::string_view work, std::FILE* terminal = stderr);
  /// Takes the line away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Cheap to call often: the line changes a few times a second, at the first call and at the last
  /// step.
  /// @param total 0: not known.
  void show(std::size_t done, std::size_t total);

 private:
  const std::string work_;
  /// Null when it is not a terminal.
  std::FILE* const terminal_;
  std::optional<std::chrono::steady_clock::time_point> shownAt_;
};

}  // namespace xel
