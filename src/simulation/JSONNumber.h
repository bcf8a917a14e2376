#pragma once

#include <cmath>
#include <cstdint>

#include <boost/json/value.hpp>

namespace xel::simulation {

/// A whole number is written without fraction and exponent, as people write it.
inline boost::json::value jsonNumber(double number) {
  if (number == std::floor(number) && std::abs(number) < 1e15) {
    return static_cast<std::int64_t>(number);
  }
  return number;
}

}  // namespace xel::simulation
