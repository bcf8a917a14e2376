#include "serve/Placeholder.h"

namespace xel::serve {

std::string filledIn(std::string text, const std::string& placeholder, const std::string& value) {
  for (auto at = text.find(placeholder); at != std::string::npos;
       at = text.find(placeholder, at + value.size())) {
    text.replace(at, placeholder.size(), value);
  }
  return text;
}

}  // namespace xel::serve
