#pragma once

#include <string>

#include "xel/platform/JSONValue.h"

namespace xel {

/// A JSON object that the user wrote. `text` is as it stands.
struct GivenDocument {
  std::string text;
  JSONValue value;

  /// @param file a path, or "-" for standard input.
  /// Throws std::runtime_error with one line when it cannot be read or is no JSON object.
  static GivenDocument read(const std::string& file);
};

}  // namespace xel
