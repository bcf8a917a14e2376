#pragma once

#include <memory>
#include <string_view>

#include "xel/platform/Export.h"

namespace xel {

/// The diagnostic log: where the library writes what is of use to an engineer but not to the host.
///
/// Threads: called on the main run loop only. A sink must not call back into the library.
class XEL_EXPORT Log {
 public:
  virtual ~Log();
  /// Writes one line, given without a line end. The text may quote what came from outside; a sink
  /// that writes to a terminal or a file replaces control characters.
  virtual void line(std::string_view text) noexcept = 0;
};

/// A sink that writes each line to standard error, control characters replaced by "?".
XEL_EXPORT std::shared_ptr<Log> makeStandardErrorLog();

}  // namespace xel
