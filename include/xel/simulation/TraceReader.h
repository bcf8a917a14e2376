#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/Export.h"
#include "xel/platform/HTTPClient.h"
#include "xel/platform/JSONValue.h"

namespace xel::simulation {

/// The version of the traces that this library writes and reads.
inline constexpr int traceVersion = 1;

/// One line of a trace: something that happened in the recorded session.
struct TraceLine {
  /// Of the line in the file, from 1.
  std::size_t number = 0;
  /// Seconds since the recording began.
  double time = 0;
  /// Such as "httpRequest" or "progress"; of kinds that the reader does not know, too.
  std::string kind = {};
  /// The whole line. What a known kind needs is there: a "progress" has its `time`.
  JSONValue value = {};
};

/// Why a trace cannot be read from some line on.
struct XEL_EXPORT TraceFault {
  /// Of the line in the file, from 1; 0 where no line is at fault.
  std::size_t line = 0;
  /// What is wrong and what to do about it, such as "is broken: ...". To follow the line's name.
  std::string description = {};

  /// The fault as one sentence for people: "NAME, line 3, is broken: ...".
  std::string text(std::string_view name) const;
};

/// Reads a trace, the JSON Lines that `TraceRecorder` writes, line by line.
///
/// Only the current line is in memory. Lines that are blank are left out; so is a last line that
/// was cut off, as by a crash of what recorded it.
/// Threads: one at a time. Errors: any bytes may come; what is no trace is a `fault`.
class XEL_EXPORT TraceReader final {
 public:
  /// Holds a body of the greatest length, each character of it escaped, with room for the rest.
  static constexpr std::size_t maxLineBytes =
      2 * HTTPClient::maxBodyBytes + (std::size_t{16} << 20);

  /// Reads the first line.
  /// @param in must stay alive; binary.
  explicit TraceReader(std::istream& in);

  /// The first line: version, services, environment and request. Empty when there is a fault in it.
  const JSONValue& header() const noexcept { return header_; }
  /// The next line after the first. Absent at the end, and from a fault on.
  std::optional<TraceLine> next();

  /// Present when the trace could not be read to its end.
  const std::optional<TraceFault>& fault() const noexcept { return fault_; }
  /// Whether a last line was left out because its end is missing.
  bool isCutOff() const noexcept { return isCutOff_; }
  /// Of the line that was read last, from 1; 0 for an empty file.
  std::size_t lineNumber() const noexcept { return lineNumber_; }

 private:
  enum class Line { complete, unended, none };

  void readHeader();
  std::optional<TraceLine> readNext();
  Line readLine();
  void fail(std::string description);

  std::istream& in_;
  std::vector<char> chunk_;
  std::size_t chunkUsed_ = 0;
  std::string text_;
  std::size_t lineNumber_ = 0;
  JSONValue header_;
  std::optional<TraceFault> fault_;
  bool isCutOff_ = false;
};

}  // namespace xel::simulation
