#include <cerrno>
#include <string>

#include <unistd.h>

#include "xel/platform/Log.h"

namespace xel {
namespace {

/// Control characters of ASCII, and those of U+0080 to U+009F as UTF-8, which terminals obey too.
std::string withoutControls(std::string_view text) {
  std::string clean;
  clean.reserve(text.size() + 1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto following = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1])
                                               : static_cast<unsigned char>(0);
    if (byte == 0xC2 && following >= 0x80 && following < 0xA0) {
      clean += '?';
      ++i;
    } else {
      clean += byte < 0x20 || byte == 0x7F ? '?' : text[i];
    }
  }
  return clean;
}

class StandardErrorLog final : public Log {
 public:
  void line(std::string_view text) noexcept override {
    const std::string line = withoutControls(text) + '\n';
    // One write for the whole line, so that lines of several writers do not mingle.
    std::string_view rest = line;
    while (!rest.empty()) {
      const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return;
      rest.remove_prefix(static_cast<std::size_t>(written));
    }
  }
};

}  // namespace

std::shared_ptr<Log> makeStandardErrorLog() { return std::make_shared<StandardErrorLog>(); }

}  // namespace xel
