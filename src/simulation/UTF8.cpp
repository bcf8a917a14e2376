#include "simulation/UTF8.h"

#include <boost/locale/utf.hpp>

namespace xel::simulation {

std::string withValidUTF8(std::string_view text) {
  using UTF8 = boost::locale::utf::utf_traits<char>;
  std::string valid;
  valid.reserve(text.size());
  for (const char *at = text.data(), *const end = at + text.size(); at != end;) {
    const char* next = at;
    if (boost::locale::utf::is_valid_codepoint(UTF8::decode(next, end))) {
      valid.append(at, next);
      at = next;
    } else {
      valid += "\xEF\xBF\xBD";
      ++at;
    }
  }
  return valid;
}

}  // namespace xel::simulation
