#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "xel/platform/Environment.h"
#include "xel/platform/Export.h"
#include "xel/session/XELStreamRequest.h"

namespace xel::simulation {

/// Takes out of texts what traces do not have: the keys, tokens and identifiers of one session. For
/// what a host writes into a log of its own.
///
/// Ownership: takes copies of what it needs. Threads: main run loop. Errors: no operation fails.
class XEL_EXPORT Redaction final {
 public:
  Redaction(const XELStreamRequest& request, const Environment& environment);
  ~Redaction();
  Redaction(const Redaction&) = delete;
  Redaction& operator=(const Redaction&) = delete;

  /// The text with replacements, also where the secrets are escaped in it for JSON, XML or URLs, up
  /// to four times one inside the other. See `TraceRecorder`.
  std::string operator()(std::string_view text) const;

 private:
  struct State;
  const std::unique_ptr<State> state_;
};

}  // namespace xel::simulation
