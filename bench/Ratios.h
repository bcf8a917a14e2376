#pragma once

#include <string>
#include <vector>

namespace xel::bench {

/// One line of the summary: a benchmark's time, as a ratio to that of another in the same run, or
/// in nanoseconds, against a bound.
struct Ratio {
  enum class Bound { atMost, atLeast };
  std::string what;
  std::string measured;
  /// Empty: the bound is in nanoseconds.
  std::string reference;
  Bound bound;
  double limit;
};

/// The lines of the summary, in the order in which the benchmarks' files add them.
std::vector<Ratio>& ratios();

/// Adds a line; made as a static beside the benchmarks that it names.
struct AddRatio {
  explicit AddRatio(Ratio ratio) { ratios().push_back(std::move(ratio)); }
};

}  // namespace xel::bench
