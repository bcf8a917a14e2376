#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/Ratios.h"

namespace xel::bench {

std::vector<Ratio>& ratios() {
  static std::vector<Ratio> all;
  return all;
}

namespace {

/// Prints as usual, and keeps every repetition's nanoseconds: of the processor, but where a
/// benchmark asks for real time.
class KeepingReporter final : public benchmark::ConsoleReporter {
 public:
  KeepingReporter() : ConsoleReporter(OO_None) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const double seconds = run.run_name.time_type == "real_time" ? run.real_accumulated_time
                                                                   : run.cpu_accumulated_time;
      times_[run.run_name.function_name].push_back(seconds / static_cast<double>(run.iterations) *
                                                   1e9);
    }
  }

  /// The median of the repetitions; 0 if the benchmark did not run.
  double medianNanoseconds(const std::string& name) {
    std::vector<double>& times = times_[name];
    if (times.empty()) return 0;
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
  }

 private:
  std::map<std::string, std::vector<double>> times_;
};

/// Prints the summary. False when a bound does not hold.
bool printRatios(KeepingReporter& reporter) {
  bool allHold = true;
  std::printf("\n%-58s %12s   %s\n", "cost", "measured", "bound");
  for (const Ratio& ratio : ratios()) {
    const double measured = reporter.medianNanoseconds(ratio.measured);
    const double reference =
        ratio.reference.empty() ? 1 : reporter.medianNanoseconds(ratio.reference);
    if (measured == 0 || reference == 0) continue;
    const bool atMost = ratio.bound == Ratio::Bound::atMost;
    const double value = atMost ? measured / reference : reference / measured;
    const bool holds = atMost ? value <= ratio.limit : value >= ratio.limit;
    allHold = allHold && holds;
    std::printf("%-58s %9.2f %s   %s %g%s\n", ratio.what.c_str(), value,
                ratio.reference.empty() ? "ns" : "x ", atMost ? "at most" : "at least", ratio.limit,
                holds ? "" : "   MISSED");
  }
  return allHold;
}

}  // namespace
}  // namespace xel::bench

/// Google Benchmark's options, and `--check`: exit with 1 when a bound does not hold.
int main(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc);
  char repetitions[] = "--benchmark_repetitions=5";
  char interleaving[] = "--benchmark_enable_random_interleaving=true";
  arguments.insert(arguments.begin() + 1, {repetitions, interleaving});
  const auto isCheck = [](const char* argument) { return std::strcmp(argument, "--check") == 0; };
  const bool check = std::erase_if(arguments, isCheck) > 0;

  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  xel::bench::KeepingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  const bool allHold = xel::bench::printRatios(reporter);
  return check && !allHold ? 1 : 0;
}
