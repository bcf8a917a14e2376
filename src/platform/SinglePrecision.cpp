#include "platform/SinglePrecision.h"

#include <cmath>
#include <limits>

namespace xel {

double singlePrecision(const JSONValue& value) noexcept {
  const double number = value.number().value_or(0);
  if (std::abs(number) > std::numeric_limits<float>::max()) return 0;
  return static_cast<float>(number);
}

}  // namespace xel
