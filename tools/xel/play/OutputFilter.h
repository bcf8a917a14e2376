#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "xel/platform/Log.h"

namespace xel {

/// What is shown in place of a text.
using OutputFilter = std::function<std::string(std::string_view)>;

/// The log, with each line as the filter gives it.
std::shared_ptr<Log> filtered(std::shared_ptr<Log> log, OutputFilter filter);

}  // namespace xel
