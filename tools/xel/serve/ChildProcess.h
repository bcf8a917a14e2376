#pragma once

#include <string>
#include <vector>

namespace xel::serve {

/// The status of a command that is not installed.
inline constexpr int commandNotFound = 127;

struct ChildResult {
  /// Of its exit, `commandNotFound`, or 128 and the signal that ended it.
  int status = 0;
  /// The end of what it wrote to standard error.
  std::string errors;
};

/// Runs a command, found as a shell would, and waits for its end. It reads nothing and its standard
/// output is dropped. Throws std::runtime_error when no process can be made.
ChildResult runChild(const std::vector<std::string>& words);

}  // namespace xel::serve
