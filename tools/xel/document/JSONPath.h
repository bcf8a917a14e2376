#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace xel {

// Places in a JSON document as people write them: $ is the document, $.ads["ad-1"].vast a member.

/// The place of a member of the object at `path`.
std::string memberPath(std::string_view path, std::string_view name);

/// The place of an element of the array at `path`.
std::string elementPath(std::string_view path, std::size_t index);

}  // namespace xel
