#include "document/JSONPath.h"

#include <algorithm>

#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>

#include "common/UTF8.h"

namespace xel {
namespace {

bool isIdentifier(std::string_view name) {
  const auto isLetter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  };
  return !name.empty() && isLetter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
    return isLetter(c) || (c >= '0' && c <= '9');
  });
}

}  // namespace

std::string memberPath(std::string_view path, std::string_view name) {
  std::string result(path);
  if (isIdentifier(name)) return result.append(".").append(name);
  return result + '[' + boost::json::serialize(boost::json::string(withValidUTF8(name))) + ']';
}

std::string elementPath(std::string_view path, std::size_t index) {
  return std::string(path) + '[' + std::to_string(index) + ']';
}

}  // namespace xel
