#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "backends/gstreamer/GObjects.h"

namespace xel {

/// The thread on which a pipeline is asked for what can take long: changes of its state, seeks, and
/// its end, which waits for the network when a server hangs.
///
/// Letting go of it never waits: the thread stops the pipeline, releases it and ends by itself.
class PipelineThread {
 public:
  /// @param turn is held for as long as the thread runs, so that of several threads with the same
  /// one each begins when the one before has ended; may be null.
  PipelineThread(GstElementHandle pipeline, std::shared_ptr<std::mutex> turn);
  ~PipelineThread();
  PipelineThread(const PipelineThread&) = delete;
  PipelineThread& operator=(const PipelineThread&) = delete;

  /// Runs functions one after the other; what has not begun when this object goes is dropped.
  void run(std::function<void(GstElement& pipeline)> function);

 private:
  struct Queue;
  const std::shared_ptr<Queue> queue_;
};

}  // namespace xel
