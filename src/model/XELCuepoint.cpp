#include "xel/model/XELCuepoint.h"

#include <array>
#include <charconv>

#include "platform/Text.h"

namespace {

/// The fixed form with six digits after the point, whatever the process locale.
std::string fixedText(double value) {
  std::array<char, 330> digits;  // The largest double has 309 digits before the point.
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::fixed, 6);
  return std::string(digits.data(), end.ptr);
}

}  // namespace

std::shared_ptr<XELCuepoint> XELCuepoint::initWithStartTime_endTime(double startTime,
                                                                    double endTime) {
  return std::make_shared<XELCuepoint>(Token(), startTime, endTime);
}

bool XELCuepoint::isEqual(const XELCuepoint& other) const noexcept {
  return this == &other ||
         (startTime_ == other.startTime_ && endTime_ == other.endTime_ && played_ == other.played_);
}

std::string XELCuepoint::description() const {
  return xel::fillTemplate("Start: %@, End: %@, Played: %@",
                           {fixedText(startTime_), fixedText(endTime_), played_ ? "Yes" : "No"});
}
