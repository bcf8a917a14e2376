#pragma once

#include <termios.h>

namespace xel {

/// A terminal that hands over each key as it is pressed and does not show it, between `enter` and
/// `leave`. Ctrl-C and Ctrl-Z stay signals.
///
/// Destruction leaves, and so does a program that ends in `std::terminate`. There must be only one.
class RawTerminal {
 public:
  /// @param terminal a file descriptor, open for as long as this lives.
  explicit RawTerminal(int terminal);
  ~RawTerminal();
  RawTerminal(const RawTerminal&) = delete;
  RawTerminal& operator=(const RawTerminal&) = delete;

  /// False, with nothing changed, while the program is in the terminal's background: its mode is
  /// another program's then.
  bool enter();
  void leave();

 private:
  const int terminal_;
  /// As it was in the beginning.
  termios mode_ = {};
};

}  // namespace xel
