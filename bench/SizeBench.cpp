#include <cstdlib>
#include <filesystem>
#include <string>

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>

#include "bench/Figures.h"

namespace xel::bench {
namespace {

void strippedLibrary(benchmark::State& state) {
  const std::string stripped = std::string(XEL_BENCH_PEERS) + "/stripped.so";
  const std::string command = "strip --strip-unneeded -o " + stripped + " " XEL_BENCH_LIBRARY;
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError("strip could not be run");
  }
  state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(stripped));
}
BENCHMARK(strippedLibrary)->Iterations(1);

/// From nothing to the end of "xel --version".
void startOfTheTool(benchmark::State& state) {
  std::string tool = XEL_BENCH_TOOL;
  std::string version = "--version";
  char* arguments[] = {tool.data(), version.data(), nullptr};
  posix_spawn_file_actions_t quietly;
  posix_spawn_file_actions_init(&quietly);
  posix_spawn_file_actions_addopen(&quietly, 1, "/dev/null", 1, 0);
  for (auto _ : state) {
    pid_t child = -1;
    int status = -1;
    if (posix_spawn(&child, tool.c_str(), &quietly, nullptr, arguments, environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0) {
      state.SkipWithError("the tool could not be run");
    }
  }
  posix_spawn_file_actions_destroy(&quietly);
}
BENCHMARK(startOfTheTool)->Iterations(20)->UseRealTime()->Unit(benchmark::kMillisecond);

constexpr auto atMost = Figure::Bound::atMost;

const AddFigure figures[] = {
    AddFigure({"the core library, stripped", "KB", atMost, 600,
               [](const Results& r) { return r.counter("strippedLibrary", "bytes") / 1000; }}),
    AddFigure({"start of the tool", "ms", atMost, 20,
               [](const Results& r) { return r.time("startOfTheTool") / 1e6; }}),
};

}  // namespace
}  // namespace xel::bench
