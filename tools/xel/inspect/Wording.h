#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace xel::inspect {

/// Safe for a terminal, long texts cut off.
std::string shortened(std::string_view text);
/// The same in double quotes.
std::string quoted(std::string_view text);
/// "1 ad", "2 ads".
std::string counted(std::size_t count, const std::string& thing);
/// "a, b and c".
std::string listed(const std::vector<std::string>& things);
/// Seconds without needless digits: "12", "30.5".
std::string numberText(double number);

}  // namespace xel::inspect
