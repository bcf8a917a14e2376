#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/Table.h"

namespace xel::bench {
namespace {

/// Prints as usual, and keeps what the repetitions measured.
class KeepingReporter final : public benchmark::ConsoleReporter {
 public:
  explicit KeepingReporter(Results& results) : ConsoleReporter(OO_None), results_(results) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      failed_ = failed_ || run.error_occurred;
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const std::string name =
          run.run_name.function_name + (run.run_name.args.empty() ? "" : '/' + run.run_name.args);
      const bool ofProcessor = run.run_name.time_type.empty();
      const double seconds = ofProcessor ? run.cpu_accumulated_time : run.real_accumulated_time;
      results_.add(name, "time", seconds / static_cast<double>(run.iterations) * 1e9);
      for (const auto& [counter, value] : run.counters) results_.add(name, counter, value);
    }
  }

  bool failed() const { return failed_; }

 private:
  Results& results_;
  bool failed_ = false;
};

}  // namespace
}  // namespace xel::bench

/// Google Benchmark's options, and two of ours: `--check` to exit with 1 when a bound does not
/// hold, and `--json=FILE` for the table as JSON.
int main(int argc, char** argv) {
  std::vector<char*> arguments(argv, argv + argc);
  char repetitions[] = "--benchmark_repetitions=5";
  char interleaving[] = "--benchmark_enable_random_interleaving=true";
  arguments.insert(arguments.begin() + 1, {repetitions, interleaving});
  const bool check = std::erase_if(
      arguments, [](const char* argument) { return std::strcmp(argument, "--check") == 0; });
  constexpr std::string_view jsonOption = "--json=";
  std::string jsonFile;
  std::erase_if(arguments, [&](const char* argument) {
    if (!std::string_view(argument).starts_with(jsonOption)) return false;
    jsonFile = argument + jsonOption.size();
    return true;
  });

  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  xel::bench::Results results;
  xel::bench::KeepingReporter reporter(results);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\n%s\n\n%s", xel::bench::machine().c_str(), xel::bench::table(results).c_str());
  if (!jsonFile.empty() && !(std::ofstream(jsonFile) << xel::bench::json(results))) {
    std::fprintf(stderr, "cannot write %s\n", jsonFile.c_str());
    return 1;
  }
  if (reporter.failed()) return 1;
  return check && !xel::bench::allHold(results) ? 1 : 0;
}
