#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xel/platform/Error.h"
#include "xel/platform/Export.h"

namespace xel {

/// Why a text is not JSON: the codes of errors in `jsonErrorDomain`. The numbers are stable.
enum class JSONError : int {
  syntax = 1,      ///< Not JSON (RFC 8259) or not UTF-8; the description gives the byte offset.
  incomplete = 2,  ///< The text ends too early.
  tooDeep = 3,     ///< Nested deeper than 512 levels.
  bareScalar = 4,  ///< The top level is neither an object nor an array.
};

inline constexpr std::string_view jsonErrorDomain = "XELJSONError";

/// A place in a parsed JSON document: a cheap handle that keeps the whole document alive.
///
/// A step to a missing member, or from a value of the wrong type, gives an empty handle, and a
/// read of the wrong type gives "absent"; so a chain of steps needs no checks. Of members with the
/// same name the last one counts. Immutable: threads may share a document.
class XEL_EXPORT JSONValue {
 public:
  struct ParseResult;

  /// An empty handle: what every step from it gives.
  JSONValue() = default;

  /// Parses UTF-8 text (RFC 8259; a byte order mark is skipped). Fails for a bare scalar.
  static ParseResult parse(std::string_view text);

  /// Whether there is a value here; JSON null is one.
  explicit operator bool() const noexcept { return node_ != nullptr; }
  bool isObject() const noexcept;

  /// The member of an object; empty if there is none.
  JSONValue operator[](std::string_view name) const noexcept;
  /// Whether an object has the member, of whatever type.
  bool has(std::string_view name) const noexcept;

  /// The text of a string. Valid while a handle to the document lives.
  std::optional<std::string_view> text() const noexcept;
  /// A number, truncated toward zero; absent when it does not fit 64 bits. Booleans are not
  /// numbers.
  std::optional<std::int64_t> integer() const noexcept;
  /// A number. One beyond the range of a double is read as null.
  std::optional<double> number() const noexcept;
  std::optional<bool> boolean() const noexcept;
  /// The elements of an array, in order; empty for anything else.
  std::vector<JSONValue> elements() const;
  /// Calls `visit` for each member of an object, in document order.
  void forEachMember(
      const std::function<void(std::string_view name, const JSONValue& value)>& visit) const;

  /// A new document: this object with one member set to a text. Empty if this is no object.
  JSONValue withMember(std::string_view name, std::string_view text) const;
  /// The value as compact JSON text; "null" for an empty handle.
  std::string serialize() const;

 private:
  explicit JSONValue(std::shared_ptr<const void> node) noexcept : node_(std::move(node)) {}
  std::shared_ptr<const void> node_;
};

struct JSONValue::ParseResult {
  JSONValue value;
  /// Present when the text could not be parsed; `value` is then empty.
  std::shared_ptr<const Error> error;
};

}  // namespace xel
