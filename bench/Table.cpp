#include "bench/Table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <sys/utsname.h>
#include <unistd.h>

namespace xel::bench {
namespace {

/// Calls `visit` with each figure of which this run has the value.
template <typename Visit>
void forEachMeasured(const Results& results, Visit visit) {
  for (const Figure& figure : figures()) {
    const double value = figure.value(results);
    if (!std::isnan(value)) visit(figure, value);
  }
}

std::string processor() {
  std::ifstream facts("/proc/cpuinfo");
  for (std::string line; std::getline(facts, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unknown processor";
}

/// To three digits, as far as they say something.
std::string rounded(double value) {
  char text[32];
  const int decimals = value < 10 ? 2 : value < 100 ? 1 : 0;
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string exact(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

std::string boundOf(const Figure& figure) {
  const bool atMost = figure.bound == Figure::Bound::atMost;
  return (atMost ? "at most " : "at least ") + exact(figure.limit);
}

}  // namespace

std::string machine() {
  utsname system{};
  uname(&system);
  return processor() + ", " + std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " cores; " +
         system.sysname + ' ' + system.release + "; GCC " + __VERSION__;
}

std::string table(const Results& results) {
  std::string text = "| | measured | | bound |\n|---|---:|---|---|\n";
  forEachMeasured(results, [&](const Figure& figure, double value) {
    text += "| " + figure.what + " | " + rounded(value) + " | " + figure.unit + " | " +
            boundOf(figure) + (figure.holds(value) ? "" : ", **missed**") + " |\n";
  });
  return text;
}

std::string json(const Results& results) {
  boost::json::array lines;
  forEachMeasured(results, [&](const Figure& figure, double value) {
    lines.push_back({{"what", figure.what},
                     {"value", value},
                     {"unit", figure.unit},
                     {"bound", boundOf(figure)},
                     {"holds", figure.holds(value)}});
  });
  return boost::json::serialize(
             boost::json::object{{"machine", machine()}, {"figures", std::move(lines)}}) +
         '\n';
}

bool allHold(const Results& results) {
  // What was not measured is not a number, and so within no bound.
  return std::all_of(figures().begin(), figures().end(),
                     [&](const Figure& figure) { return figure.holds(figure.value(results)); });
}

}  // namespace xel::bench
