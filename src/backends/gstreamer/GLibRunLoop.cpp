#include "xel/gstreamer/GLibRunLoop.h"

#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include <glib.h>

#include "backends/gstreamer/GObjects.h"

namespace xel {
namespace {

gint64 timerInterval(double seconds) noexcept {
  constexpr double shortest = 0.001;
  constexpr double longest = 100 * 365.25 * 24 * 3600;
  // Written so that NaN is too short as well.
  if (!(seconds >= shortest)) seconds = shortest;
  return static_cast<gint64>(std::min(seconds, longest) * G_USEC_PER_SEC);
}

/// What a function throws has nowhere to go: it ends the program.
void call(const std::function<void()>& function) noexcept { function(); }

/// A source that does nothing but become ready at its time.
GSourceFuncs clockedFunctions = {
    nullptr,
    nullptr,
    [](GSource*, GSourceFunc function, gpointer data) -> gboolean { return function(data); },
    nullptr,
    nullptr,
    nullptr};

/// What has been posted; it outlives the loop where its source is being dispatched.
struct Posted {
  std::mutex mutex;
  std::deque<std::function<void()>> functions;
};

struct Timer {
  GSource* source;
  gint64 interval;
  gint64 next;
  std::function<void()> function;
};

/// @param data is owned by the source, and released with it.
template <typename Data>
GSourceHandle attachSource(GMainContext* context, gint64 readyTime, GSourceFunc function,
                           std::shared_ptr<Data> data) {
  GSourceHandle source(g_source_new(&clockedFunctions, sizeof(GSource)));
  g_source_set_callback(source.get(), function, new std::shared_ptr<Data>(std::move(data)),
                        [](gpointer held) { delete static_cast<std::shared_ptr<Data>*>(held); });
  g_source_set_ready_time(source.get(), readyTime);
  g_source_attach(source.get(), context);
  return source;
}

gboolean runPosted(gpointer data) {
  const auto posted = *static_cast<std::shared_ptr<Posted>*>(data);
  std::function<void()> function;
  {
    const std::lock_guard lock(posted->mutex);
    if (!posted->functions.empty()) {
      function = std::move(posted->functions.front());
      posted->functions.pop_front();
    }
    if (posted->functions.empty()) g_source_set_ready_time(g_main_current_source(), -1);
  }
  if (function) call(function);
  return G_SOURCE_CONTINUE;
}

gboolean fireTimer(gpointer data) {
  const auto timer = *static_cast<std::shared_ptr<Timer>*>(data);
  const gint64 late = g_get_monotonic_time() - timer->next;
  timer->next += timer->interval * (std::max<gint64>(late, 0) / timer->interval + 1);
  g_source_set_ready_time(timer->source, timer->next);
  call(timer->function);
  return G_SOURCE_CONTINUE;
}

class GLibRunLoop final : public RunLoop {
 public:
  GLibRunLoop()
      : mainThread_(std::this_thread::get_id()),
        context_(g_main_context_ref_thread_default()),
        posted_(std::make_shared<Posted>()),
        postedSource_(attachSource(context_.get(), -1, runPosted, posted_)) {}

  ~GLibRunLoop() override {
    // What is released here may post and cancel in its turn.
    while (!timers_.empty()) cancel(timers_.begin()->first);
    g_source_destroy(postedSource_.get());
    while (true) {
      std::deque<std::function<void()>> posted;
      const std::lock_guard lock(posted_->mutex);
      posted.swap(posted_->functions);
      if (posted.empty()) return;
    }
  }
  GLibRunLoop(const GLibRunLoop&) = delete;
  GLibRunLoop& operator=(const GLibRunLoop&) = delete;

  void post(std::function<void()> function) override {
    const std::lock_guard lock(posted_->mutex);
    posted_->functions.push_back(std::move(function));
    g_source_set_ready_time(postedSource_.get(), 0);
  }

  TimerID every(double seconds, std::function<void()> function) override {
    const auto timer = std::make_shared<Timer>();
    timer->interval = timerInterval(seconds);
    timer->next = g_get_monotonic_time() + timer->interval;
    timer->function = std::move(function);
    auto source = attachSource(context_.get(), -1, fireTimer, timer);
    timer->source = source.get();
    g_source_set_ready_time(source.get(), timer->next);
    timers_.emplace(++lastTimer_, std::move(source));
    return lastTimer_;
  }

  void cancel(TimerID timer) override {
    const auto cancelled = timers_.extract(timer);
    if (cancelled) g_source_destroy(cancelled.mapped().get());
  }

  bool isMain() const override { return mainThread_ == std::this_thread::get_id(); }

 private:
  const std::thread::id mainThread_;
  const GMainContextHandle context_;
  const std::shared_ptr<Posted> posted_;
  const GSourceHandle postedSource_;
  std::map<TimerID, GSourceHandle> timers_;
  TimerID lastTimer_ = 0;
};

}  // namespace

std::shared_ptr<RunLoop> makeGLibRunLoop() { return std::make_shared<GLibRunLoop>(); }

}  // namespace xel
