#include "xel/simulation/VirtualRunLoop.h"

#include <algorithm>
#include <utility>

#include "simulation/Nanoseconds.h"

namespace xel::simulation {
namespace {

constexpr double shortestInterval = 0.001;

std::shared_ptr<std::function<void()>> shared(std::function<void()> function) {
  return std::make_shared<std::function<void()>>(std::move(function));
}

}  // namespace

VirtualRunLoop::VirtualRunLoop() : mainThread_(std::this_thread::get_id()) {}
VirtualRunLoop::~VirtualRunLoop() { clear(); }

void VirtualRunLoop::runUntilIdle() {
  while (runOnePosted()) {
  }
}

void VirtualRunLoop::advance(double seconds) {
  const Nanoseconds target = now_ + nanoseconds(seconds);
  for (;;) {
    runUntilIdle();
    const auto next = earliest();
    if (next == timers_.end() || next->second.due > target) break;
    now_ = std::max(now_, next->second.due);
    fire(next);
  }
  now_ = std::max(now_, target);
}

void VirtualRunLoop::after(double seconds, std::function<void()> function) {
  const Nanoseconds delay = nanoseconds(seconds);
  if (delay == 0) return post(std::move(function));
  addTimer({now_ + delay, 0, shared(std::move(function))});
}

std::size_t VirtualRunLoop::timerCount() const {
  return static_cast<std::size_t>(std::count_if(
      timers_.begin(), timers_.end(), [](const auto& entry) { return entry.second.interval > 0; }));
}

void VirtualRunLoop::clear() {
  for (;;) {
    // Releasing a function may post and cancel.
    const Timers timers = std::exchange(timers_, {});
    std::deque<std::function<void()>> posted;
    {
      const std::lock_guard lock(mutex_);
      posted.swap(posted_);
    }
    if (timers.empty() && posted.empty()) return;
  }
}

void VirtualRunLoop::post(std::function<void()> function) {
  const std::lock_guard lock(mutex_);
  posted_.push_back(std::move(function));
}

RunLoop::TimerID VirtualRunLoop::every(double seconds, std::function<void()> function) {
  const Nanoseconds interval =
      nanoseconds(seconds >= shortestInterval ? seconds : shortestInterval);
  return addTimer({now_ + interval, interval, shared(std::move(function))});
}

void VirtualRunLoop::cancel(TimerID timer) {
  // Released only after it has left the map: the function may own what cancels.
  const auto released = timers_.extract(timer);
}

bool VirtualRunLoop::isMain() const { return std::this_thread::get_id() == mainThread_; }

RunLoop::TimerID VirtualRunLoop::addTimer(Timer timer) {
  timers_.emplace(++lastTimer_, std::move(timer));
  return lastTimer_;
}

bool VirtualRunLoop::runOnePosted() {
  std::function<void()> function;
  {
    const std::lock_guard lock(mutex_);
    if (posted_.empty()) return false;
    function = std::move(posted_.front());
    posted_.pop_front();
  }
  function();
  return true;
}

VirtualRunLoop::Timers::iterator VirtualRunLoop::earliest() {
  return std::min_element(timers_.begin(), timers_.end(),
                          [](const auto& a, const auto& b) { return a.second.due < b.second.due; });
}

void VirtualRunLoop::fire(Timers::iterator timer) {
  const Function function = timer->second.function;
  if (timer->second.interval > 0) {
    timer->second.due += timer->second.interval;
  } else {
    timers_.erase(timer);
  }
  (*function)();
}

}  // namespace xel::simulation
