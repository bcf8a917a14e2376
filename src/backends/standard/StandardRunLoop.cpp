#include "xel/platform/StandardRunLoop.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace xel {
namespace {

using Clock = std::chrono::steady_clock;

Clock::duration timerInterval(double seconds) noexcept {
  constexpr double shortest = 0.001;
  constexpr double longest = 100 * 365.25 * 24 * 3600;
  // Written so that NaN is too short as well.
  if (!(seconds >= shortest)) seconds = shortest;
  return std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double>(std::min(seconds, longest)));
}

/// What a function throws has nowhere to go: it ends the program.
void call(const std::function<void()>& function) noexcept { function(); }

}  // namespace

struct StandardRunLoop::State {
  struct Timer {
    Clock::duration interval;
    Clock::time_point next;
    /// Shared, so that it outlives its timer while it runs.
    std::shared_ptr<const std::function<void()>> function;
  };
  using Timers = std::map<TimerID, Timer>;

  Timers::iterator nextTimer();
  std::function<void()> fire(Timer& timer, Clock::time_point now);
  std::function<void()> takePosted();
  /// Waits for the next function to run; absent once the loop is to stop.
  std::optional<std::function<void()>> next();

  std::atomic<std::thread::id> mainThread = std::this_thread::get_id();
  /// Main thread only, like everything about timers.
  Timers timers;
  TimerID lastTimer = 0;
  bool timerRanLast = false;

  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::function<void()>> posted;
  bool stopping = false;
};

StandardRunLoop::State::Timers::iterator StandardRunLoop::State::nextTimer() {
  return std::min_element(timers.begin(), timers.end(), [](const auto& a, const auto& b) {
    return a.second.next < b.second.next;
  });
}

std::function<void()> StandardRunLoop::State::fire(Timer& timer, Clock::time_point now) {
  const auto missed = (now - timer.next) / timer.interval;
  timer.next += timer.interval * (missed + 1);
  timerRanLast = true;
  return [function = timer.function] { (*function)(); };
}

std::function<void()> StandardRunLoop::State::takePosted() {
  std::function<void()> function = std::move(posted.front());
  posted.pop_front();
  timerRanLast = false;
  return function;
}

std::optional<std::function<void()>> StandardRunLoop::State::next() {
  std::unique_lock lock(mutex);
  while (!stopping) {
    const auto timer = nextTimer();
    const auto now = Clock::now();
    const bool due = timer != timers.end() && timer->second.next <= now;
    // Posted functions and due timers take turns, so that neither starves the other.
    if (due && (posted.empty() || !timerRanLast)) return fire(timer->second, now);
    if (!posted.empty()) return takePosted();
    if (timer == timers.end()) {
      changed.wait(lock);
    } else {
      changed.wait_until(lock, timer->second.next);
    }
  }
  stopping = false;
  return std::nullopt;
}

const std::shared_ptr<StandardRunLoop>& StandardRunLoop::main() {
  // Never destroyed: when the process exits, what is still posted may refer to what is gone.
  static const auto& loop = *new auto(std::make_shared<StandardRunLoop>());
  return loop;
}

StandardRunLoop::StandardRunLoop() : state_(std::make_unique<State>()) {}

StandardRunLoop::~StandardRunLoop() {
  // What is released here may post and cancel in its turn.
  while (true) {
    const auto timers = std::exchange(state_->timers, {});
    std::deque<std::function<void()>> posted;
    {
      const std::lock_guard lock(state_->mutex);
      posted.swap(state_->posted);
    }
    if (timers.empty() && posted.empty()) return;
  }
}

void StandardRunLoop::run() {
  state_->mainThread = std::this_thread::get_id();
  while (const auto function = state_->next()) call(*function);
}

void StandardRunLoop::stop() {
  const std::lock_guard lock(state_->mutex);
  state_->stopping = true;
  state_->changed.notify_one();
}

void StandardRunLoop::post(std::function<void()> function) {
  const std::lock_guard lock(state_->mutex);
  state_->posted.push_back(std::move(function));
  state_->changed.notify_one();
}

RunLoop::TimerID StandardRunLoop::every(double seconds, std::function<void()> function) {
  const auto interval = timerInterval(seconds);
  const TimerID timer = ++state_->lastTimer;
  state_->timers.emplace(
      timer, State::Timer{interval, Clock::now() + interval,
                          std::make_shared<const std::function<void()>>(std::move(function))});
  return timer;
}

void StandardRunLoop::cancel(TimerID timer) {
  // The function is released last: its destructor may cancel timers in its turn.
  const auto cancelled = state_->timers.extract(timer);
}

bool StandardRunLoop::isMain() const { return state_->mainThread == std::this_thread::get_id(); }

}  // namespace xel
