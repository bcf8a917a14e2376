#include "common/SignalWatcher.h"

#include <utility>

#include <pthread.h>

namespace xel {

SignalWatcher::SignalWatcher(std::shared_ptr<RunLoop> runLoop, std::initializer_list<int> signals,
                             std::function<void(int signal)> handler)
    : wakeSignal_(*signals.begin()) {
  sigset_t watched;
  sigemptyset(&watched);
  for (const auto signal : signals) sigaddset(&watched, signal);
  pthread_sigmask(SIG_BLOCK, &watched, &earlierMask_);
  thread_ = std::thread([this, watched, loop = std::move(runLoop), handler = std::move(handler)] {
    for (int signal = 0; sigwait(&watched, &signal) == 0;) {
      if (isEnding_) return;
      loop->post([handler, signal] { handler(signal); });
    }
  });
}

SignalWatcher::~SignalWatcher() {
  isEnding_ = true;
  pthread_kill(thread_.native_handle(), wakeSignal_);
  thread_.join();
  pthread_sigmask(SIG_SETMASK, &earlierMask_, nullptr);
}

}  // namespace xel
