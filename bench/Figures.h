#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace xel::bench {

/// What the benchmarks of one run measured, by their names with arguments, such as "vast/30".
///
/// Of a benchmark's repetitions the fastest counts, since whatever else the machine does can only
/// add; of other quantities the last, which a benchmark may gather over all of them.
class Results {
 public:
  void add(const std::string& benchmark, const std::string& quantity, double value);

  /// Nanoseconds of one iteration: of the processor, but where a benchmark asks for real time.
  double time(const std::string& benchmark) const { return counter(benchmark, "time"); }
  /// A counter that the benchmark sets; not a number if it did not run.
  double counter(const std::string& benchmark, const std::string& name) const;

 private:
  std::map<std::string, std::map<std::string, double>> values_;
};

/// One line of the table: something that a run measured, and what it must not pass.
struct Figure {
  enum class Bound { atMost, atLeast };
  std::string what;
  std::string unit;
  Bound bound;
  double limit;
  std::function<double(const Results&)> value;

  bool holds(double measured) const {
    return bound == Bound::atMost ? measured <= limit : measured >= limit;
  }
};

/// The lines of the table, in the order in which the benchmarks' files add them.
std::vector<Figure>& figures();

/// Adds a line; made as a static beside the benchmarks that it reads.
struct AddFigure {
  explicit AddFigure(Figure figure) { figures().push_back(std::move(figure)); }
};

}  // namespace xel::bench
