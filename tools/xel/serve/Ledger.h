#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace xel::serve {

/// Every request that the server received, in the order of arrival. Threads: any.
class Ledger {
 public:
  struct Entry {
    std::string method;
    /// Path and query, as they were sent.
    std::string target;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body = {};
    /// Absent until the answer is known.
    std::optional<int> status = {};
  };

  /// Answers the entry's place, for `finish`.
  std::size_t begin(Entry entry);
  void finish(std::size_t place, std::string body, int status);

  /// A JSON array of objects with "method", "target", "headers", "body" and "status", which is
  /// null while a request is being answered.
  std::string json() const;

 private:
  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

}  // namespace xel::serve
