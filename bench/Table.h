#pragma once

#include <string>

#include "bench/Figures.h"

namespace xel::bench {

/// The machine and the compiler, in one line.
std::string machine();

/// The figures that this run measured, as a table of Markdown.
std::string table(const Results& results);

/// The same for programs, as JSON text.
std::string json(const Results& results);

/// Whether every figure was measured, and is within its bound.
bool allHold(const Results& results);

}  // namespace xel::bench
