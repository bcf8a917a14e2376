// JSON texts, beside the library that parses them: both accept the same ones and read the same
// values, and what is written reads back.

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include <boost/json.hpp>

#include "xel/platform/JSONValue.h"

#include "fuzz/support/Require.h"

namespace {

namespace json = boost::json;
using xel::JSONValue;
using xel::fuzz::require;

bool isNear(double one, double other) {
  return one == other || std::abs(one - other) <= std::abs(other) * 1e-14;
}

/// @param approximate as the other library has it, which rounds at the end of the range and takes
///        "0e330" for no number.
void compareNumbers(std::optional<double> number, double approximate) {
  constexpr double huge = 1.79e308;
  if (std::isnan(approximate)) {
    require(number == 0.0, "a zero that is none");
  } else if (std::abs(approximate) > huge) {
    require(!number || std::abs(*number) > huge, "a number that is not huge");
  } else {
    require(number && isNear(*number, approximate), "another number");
  }
}

void compare(const JSONValue& value, const json::value& expected) {
  require(static_cast<bool>(value), "a value that is missing");
  require(value.boolean().has_value() == expected.is_bool() &&
              value.text().has_value() == expected.is_string() &&
              value.isObject() == expected.is_object(),
          "a value of another type");
  if (const auto* text = expected.if_string()) {
    require(*value.text() == std::string_view(text->data(), text->size()), "another text");
  } else if (expected.is_bool()) {
    require(*value.boolean() == expected.as_bool(), "another truth");
  } else if (expected.is_number()) {
    compareNumbers(value.number(), expected.to_number<double>());
    require(!expected.is_int64() || value.integer() == expected.as_int64(), "another integer");
  } else if (const auto* object = expected.if_object()) {
    for (const auto& member : *object) {
      compare(value[{member.key().data(), member.key().size()}], member.value());
    }
  } else if (const auto* array = expected.if_array()) {
    const auto elements = value.elements();
    require(elements.size() == array->size(), "another number of elements");
    for (std::size_t i = 0; i < elements.size(); ++i) compare(elements[i], (*array)[i]);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto parsed = JSONValue::parse(text);

  const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  json::parse_options options;
  options.max_depth = 512;
  json::error_code error;
  const auto expected = json::parse(std::string_view(text).substr(mark), error, {}, options);
  const bool isAccepted = !error && expected.is_structured();
  require(isAccepted == !parsed.error, "a text that only one of the two accepts");
  if (parsed.error) {
    require(!parsed.value && !parsed.error->description.empty(), "an error without a description");
    return 0;
  }
  compare(parsed.value, expected);
  const std::string written = parsed.value.serialize();
  require(JSONValue::parse(written).value.serialize() == written,
          "a text that reads back otherwise");
  return 0;
}
