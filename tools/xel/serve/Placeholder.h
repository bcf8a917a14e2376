#pragma once

#include <string>

namespace xel::serve {

/// The text with the value wherever the placeholder, such as "{session}", stands.
std::string filledIn(std::string text, const std::string& placeholder, const std::string& value);

}  // namespace xel::serve
