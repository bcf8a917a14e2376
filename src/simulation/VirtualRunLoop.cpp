#include "xel/simulation/VirtualRunLoop.h"

#include <algorithm>
#include <utility>

namespace xel::simulation {
namespace {

constexpr double shortestInterval = 0.001;
constexpr double longestInterval = 100 * 365.25 * 24 * 3600;
/// `now` is a sum of steps and a due time is a product, so the two may differ in the last digits.
constexpr double tolerance = 1e-9;

}  // namespace

VirtualRunLoop::VirtualRunLoop() : mainThread_(std::this_thread::get_id()) {}
VirtualRunLoop::~VirtualRunLoop() { clear(); }

void VirtualRunLoop::runUntilIdle() {
  while (runOnePosted()) {
  }
}

void VirtualRunLoop::advance(double seconds) {
  const double target = now_ + (seconds > 0 ? seconds : 0);
  for (;;) {
    runUntilIdle();
    const auto next = earliest();
    if (next == timers_.end() || next->second.due() > target + tolerance) break;
    now_ = std::max(now_, std::min(next->second.due(), target));
    fire(next);
  }
  now_ = std::max(now_, target);
}

void VirtualRunLoop::after(double seconds, std::function<void()> function) {
  if (!(seconds > 0)) return post(std::move(function));
  addTimer(seconds, false, std::move(function));
}

std::size_t VirtualRunLoop::timerCount() const {
  return static_cast<std::size_t>(std::count_if(
      timers_.begin(), timers_.end(), [](const auto& entry) { return entry.second.repeats; }));
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
  const double interval = seconds >= shortestInterval ? seconds : shortestInterval;
  return addTimer(std::min(interval, longestInterval), true, std::move(function));
}

void VirtualRunLoop::cancel(TimerID timer) {
  // Released only after it has left the map: the function may own what cancels.
  const auto released = timers_.extract(timer);
}

bool VirtualRunLoop::isMain() const { return std::this_thread::get_id() == mainThread_; }

RunLoop::TimerID VirtualRunLoop::addTimer(double seconds, bool repeats,
                                          std::function<void()> function) {
  timers_[++lastTimer_] = {now_, seconds, 1, repeats,
                           std::make_shared<std::function<void()>>(std::move(function))};
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
  return std::min_element(timers_.begin(), timers_.end(), [](const auto& a, const auto& b) {
    return a.second.due() < b.second.due();
  });
}

void VirtualRunLoop::fire(Timers::iterator timer) {
  const Function function = timer->second.function;
  if (timer->second.repeats) {
    ++timer->second.firing;
  } else {
    timers_.erase(timer);
  }
  (*function)();
}

}  // namespace xel::simulation
