#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "serve/Fault.h"

namespace xel::serve {

/// The faults in force, and how often each struck. Threads: any.
class FaultList {
 public:
  explicit FaultList(std::vector<Fault> faults) { replace(std::move(faults)); }

  /// Requests are counted anew.
  void replace(std::vector<Fault> faults);
  /// Counts a request, and answers the first fault in the list that concerns it.
  std::optional<Fault> strike(Endpoint endpoint);
  /// A JSON array of objects with "fault", "requests" (that its endpoint has had) and "struck".
  std::string json() const;

  /// Reads a JSON array of texts. Throws std::invalid_argument with one sentence.
  static std::vector<Fault> parse(const std::string& json);

 private:
  struct Entry {
    Fault fault;
    std::size_t requests = 0;
    std::size_t struck = 0;
  };
  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

}  // namespace xel::serve
