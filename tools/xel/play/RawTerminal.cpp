#include "play/RawTerminal.h"

#include <atomic>
#include <cstdlib>
#include <exception>

#include <unistd.h>

namespace xel {
namespace {

/// The one that is entered; `std::terminate` finds it here.
std::atomic<RawTerminal*> entered = nullptr;
std::terminate_handler earlierHandler = nullptr;

[[noreturn]] void leaveAndTerminate() {
  if (auto* terminal = entered.load()) terminal->leave();
  if (earlierHandler) earlierHandler();
  std::abort();
}

bool isInForeground(int terminal) { return tcgetpgrp(terminal) == getpgrp(); }

}  // namespace

RawTerminal::RawTerminal(int terminal) : terminal_(terminal) {
  tcgetattr(terminal_, &mode_);
  earlierHandler = std::set_terminate(leaveAndTerminate);
}

RawTerminal::~RawTerminal() {
  leave();
  std::set_terminate(earlierHandler);
}

bool RawTerminal::enter() {
  if (!isInForeground(terminal_)) return false;
  auto raw = mode_;
  raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  raw.c_cc[VMIN] = 1;
  raw.c_cc[VTIME] = 0;
  if (tcsetattr(terminal_, TCSANOW, &raw) != 0) return false;
  entered = this;
  return true;
}

void RawTerminal::leave() {
  if (entered.exchange(nullptr) != this || !isInForeground(terminal_)) return;
  tcsetattr(terminal_, TCSANOW, &mode_);
}

}  // namespace xel
