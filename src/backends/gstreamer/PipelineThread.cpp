#include "backends/gstreamer/PipelineThread.h"

#include <condition_variable>
#include <deque>
#include <thread>
#include <utility>

#include <pthread.h>

#include "backends/gstreamer/CancelledDownloads.h"

namespace xel {

struct PipelineThread::Queue {
  using Function = std::function<void(GstElement&)>;

  /// Waits for the next function; empty at the end.
  Function next();

  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Function> functions;
  bool isEnding = false;
};

PipelineThread::Queue::Function PipelineThread::Queue::next() {
  std::unique_lock lock(mutex);
  changed.wait(lock, [this] { return isEnding || !functions.empty(); });
  if (isEnding) return nullptr;
  Function function = std::move(functions.front());
  functions.pop_front();
  return function;
}

PipelineThread::PipelineThread(GstElementHandle pipeline, std::shared_ptr<std::mutex> turn)
    : queue_(std::make_shared<Queue>()) {
  std::thread thread(
      [queue = queue_, pipeline = std::move(pipeline), turn = std::move(turn)]() mutable {
        const auto held = turn ? std::unique_lock(*turn) : std::unique_lock<std::mutex>();
        while (const auto function = queue->next()) {
          guardCancelledDownloads();
          function(*pipeline);
        }
        guardCancelledDownloads();
        gst_element_set_state(pipeline.get(), GST_STATE_NULL);
        pipeline.reset();
      });
  pthread_setname_np(thread.native_handle(), "xel-pipeline");
  thread.detach();
}

PipelineThread::~PipelineThread() {
  // What has not begun is released on this thread, and not within the lock.
  std::deque<Queue::Function> dropped;
  const std::lock_guard lock(queue_->mutex);
  dropped.swap(queue_->functions);
  queue_->isEnding = true;
  queue_->changed.notify_one();
}

void PipelineThread::run(std::function<void(GstElement&)> function) {
  const std::lock_guard lock(queue_->mutex);
  queue_->functions.push_back(std::move(function));
  queue_->changed.notify_one();
}

}  // namespace xel
