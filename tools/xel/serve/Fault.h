#pragma once

#include <cstddef>
#include <limits>
#include <string>

namespace xel::serve {

enum class Endpoint { init, document, manifest, segment, ping };

/// What goes wrong with which requests, as the user wrote it.
///
/// The form is ENDPOINT=KIND[:ARGUMENT][@REQUESTS], such as "document=status:500@2-4". REQUESTS
/// counts the requests for the endpoint from 1, over all sessions: "@2", "@2-4" or "@2-".
struct Fault {
  enum class Kind {
    delay,
    hang,
    status,
    reset,
    truncate,
    malformed,
    wrongType,
    oversized,
    redirectLoop,
    slowDrip,
  };

  /// Throws std::invalid_argument with one sentence, which tells what is allowed.
  static Fault parse(const std::string& text);

  bool concerns(std::size_t request) const noexcept { return request >= first && request <= last; }
  /// Whether a client that does as it should has nothing of the answer.
  bool losesAnswer() const noexcept;

  Endpoint endpoint;
  Kind kind;
  /// Seconds, a status, bytes, or bytes a second; negative where none was given.
  double argument = -1;
  std::size_t first = 1;
  std::size_t last = std::numeric_limits<std::size_t>::max();
  /// As it was written.
  std::string text;
};

}  // namespace xel::serve
