#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "xel/platform/RunLoop.h"

#include "play/KeyDecoder.h"
#include "play/RawTerminal.h"

namespace xel {

/// Turns the keys that are pressed on a terminal into calls on a run loop, for as long as it lives.
///
/// The terminal is in raw mode meanwhile. Threads: main run loop; it has a thread of its own.
class KeyReader {
 public:
  /// @param terminal a file descriptor, open for as long as this lives.
  KeyReader(int terminal, std::shared_ptr<RunLoop> runLoop, std::function<void(Key)> handler);
  ~KeyReader();
  KeyReader(const KeyReader&) = delete;
  KeyReader& operator=(const KeyReader&) = delete;

  /// Gives the terminal back and leaves its keys alone, until `resume`; for a program that is about
  /// to be suspended.
  void suspend();
  /// Takes the terminal again; does nothing while the program is in the background. For a program
  /// that has been continued: others may have changed the terminal's mode meanwhile.
  void resume();

 private:
  void readKeys();

  const int terminal_;
  const std::shared_ptr<RunLoop> runLoop_;
  const std::function<void(Key)> handler_;
  RawTerminal mode_;
  /// An eventfd that can be read when the thread is to end.
  const int ending_;
  std::thread thread_;
};

}  // namespace xel
