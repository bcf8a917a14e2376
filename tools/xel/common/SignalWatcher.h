#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <initializer_list>
#include <memory>
#include <thread>

#include "xel/platform/RunLoop.h"

namespace xel {

/// Turns signals of the process into calls on a run loop for as long as it lives.
///
/// Make it before the program has other threads: the signals are blocked in those made later.
class SignalWatcher {
 public:
  SignalWatcher(std::shared_ptr<RunLoop> runLoop, std::initializer_list<int> signals,
                std::function<void(int signal)> handler);
  ~SignalWatcher();
  SignalWatcher(const SignalWatcher&) = delete;
  SignalWatcher& operator=(const SignalWatcher&) = delete;

 private:
  sigset_t earlierMask_ = {};
  std::atomic<bool> isEnding_ = false;
  int wakeSignal_;
  std::thread thread_;
};

}  // namespace xel
