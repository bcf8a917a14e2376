#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulate/SimulationStep.h"

namespace xel::simulate {

/// How a script is written, for the command's help.
extern const char* const scriptLanguage;

/// The steps of `--play FROM:TO,AT:TO,...`. Throws `CLI::ValidationError`.
std::vector<SimulationStep> stepsOfPlay(const std::string& text);

/// The steps of a script file. Documents that it names stand beside it.
/// @param document the text of the document that the session begins with.
/// Throws std::runtime_error with one line that names the place.
std::vector<SimulationStep> stepsOfScript(const std::string& file, const std::string& document);

}  // namespace xel::simulate
