#pragma once

#include <string>
#include <utility>
#include <vector>

#include "document/StreamDocument.h"

namespace xel::simulate {

/// Stream times at which the texts of a live document come, ascending, since the document itself
/// does not say: the first break begins at 10 s, 30 s lie between breaks, and an ad's events lie at
/// their parts of its duration, its complete 0.1 s before the end. Events of no ad of a break come
/// last.
std::vector<std::pair<double, std::string>> scheduleTexts(const StreamDocument& document);

}  // namespace xel::simulate
