#include "play/OutputFilter.h"

#include <utility>

namespace xel {
namespace {

class FilteredLog final : public Log {
 public:
  FilteredLog(std::shared_ptr<Log> log, OutputFilter filter)
      : log_(std::move(log)), filter_(std::move(filter)) {}
  void line(std::string_view text) noexcept override { log_->line(filter_(text)); }

 private:
  const std::shared_ptr<Log> log_;
  const OutputFilter filter_;
};

}  // namespace

std::shared_ptr<Log> filtered(std::shared_ptr<Log> log, OutputFilter filter) {
  return std::make_shared<FilteredLog>(std::move(log), std::move(filter));
}

}  // namespace xel
