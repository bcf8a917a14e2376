#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace xel {

/// The file that a session is recorded in. What cannot be written is told on standard error, once,
/// and the session goes on without.
class TraceFile {
 public:
  /// Replaces what is there.
  explicit TraceFile(std::string path);

  /// Safe with the system when this returns.
  void write(std::string_view line);
  /// Whether everything has been written so far.
  bool isWhole() const noexcept { return file_ != nullptr; }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void giveUp();

  const std::string path_;
  std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace xel
