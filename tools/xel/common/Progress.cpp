#include "common/Progress.h"

#include <cstdlib>

#include <sys/ioctl.h>
#include <unistd.h>

#include "common/PrintableText.h"

namespace xel {
namespace {

constexpr std::chrono::milliseconds betweenLines{100};
constexpr auto eraseLine = "\r\x1B[K";

bool isTerminal(std::FILE* file) {
  const auto* kind = std::getenv("TERM");
  return isatty(fileno(file)) != 0 && kind && std::string_view(kind) != "dumb";
}

/// One less than there are: a full line would wrap.
std::size_t columnsOf(std::FILE* terminal) {
  winsize size = {};
  const bool isKnown = ioctl(fileno(terminal), TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
  return isKnown ? size.ws_col - 1U : 79U;
}

}  // namespace

Progress::Progress(std::string_view work, std::FILE* terminal)
    : work_(printable(work)), terminal_(isTerminal(terminal) ? terminal : nullptr) {}

Progress::~Progress() {
  if (!shownAt_) return;
  std::fputs(eraseLine, terminal_);
  std::fflush(terminal_);
}

void Progress::show(std::size_t done, std::size_t total) {
  if (!terminal_) return;
  const auto now = std::chrono::steady_clock::now();
  const bool isLast = total != 0 && done >= total;
  if (shownAt_ && !isLast && now - *shownAt_ < betweenLines) return;
  shownAt_ = now;
  auto line = work_ + ": " + std::to_string(done);
  if (total != 0) line += " of " + std::to_string(total);
  const auto columns = static_cast<int>(columnsOf(terminal_));
  std::fprintf(terminal_, "%s%.*s", eraseLine, columns, line.c_str());
  std::fflush(terminal_);
}

}  // namespace xel
