#pragma once

#include <chrono>
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
    /// Seconds since the ledger was begun.
    double time = 0;
    /// The fault that struck it, as the user wrote it; empty: none.
    std::string fault = {};
    bool isAnswerLost = false;
  };

  /// Answers the entry's place, for the other operations.
  std::size_t begin(Entry entry);
  /// @param status absent when there is no answer.
  void finish(std::size_t place, std::string body, std::optional<int> status);
  /// Tells that a fault struck, and whether it costs the client the answer.
  void strike(std::size_t place, const std::string& fault, bool isAnswerLost);
  bool isAnswerLost(std::size_t place) const;

  std::vector<Entry> entries() const;
  /// A JSON array of objects with "time", "method", "target", "headers", "body", "status", which is
  /// null while a request is being answered and when it never is, and "fault", which is null when
  /// none struck.
  std::string json() const;

 private:
  const std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

}  // namespace xel::serve
