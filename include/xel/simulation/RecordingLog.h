#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/Export.h"
#include "xel/platform/Log.h"

namespace xel::simulation {

/// A diagnostic log that keeps its lines.
class XEL_EXPORT RecordingLog final : public Log {
 public:
  RecordingLog();
  ~RecordingLog() override;

  const std::vector<std::string>& lines() const noexcept { return lines_; }
  void line(std::string_view text) noexcept override { lines_.emplace_back(text); }

 private:
  std::vector<std::string> lines_;
};

}  // namespace xel::simulation
