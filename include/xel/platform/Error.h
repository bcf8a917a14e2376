#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace xel {

/// What went wrong: a domain that names the source, a code that is stable within it, and a text.
///
/// Passed as `std::shared_ptr<const Error>`: immutable, shared freely, absent where nothing failed.
/// Threads: any, since it never changes.
struct Error {
  /// Who speaks. Compared exactly. See `errorDomain`, `httpErrorDomain`, `transferErrorDomain`
  /// and `jsonErrorDomain`; a display may use a domain of its own.
  std::string domain;
  /// What happened, stable within the domain and meant for programs.
  std::int64_t code = 0;
  /// What happened, for people. UTF-8, one or more lines, never localised by the library.
  std::string description;
  /// The error that this one was made from; null if there is none.
  std::shared_ptr<const Error> underlying;
};

}  // namespace xel
