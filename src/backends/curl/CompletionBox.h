#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "xel/platform/RunLoop.h"

#include "backends/curl/CurlJob.h"

namespace xel {

/// Where completions wait for their results, and results for the main run loop.
///
/// Completions hold objects of the main thread, so they never leave it: other threads know them by
/// number only. Results that come close together share one posted function.
class CompletionBox : public std::enable_shared_from_this<CompletionBox> {
 public:
  explicit CompletionBox(RunLoop& loop) : loop_(loop) {}

  /// Threads: main run loop.
  TransferID add(HTTPClient::Completion completion);

  /// Has the completion run on the main run loop, later. Threads: any.
  void finish(TransferID id, HTTPResult result);

  /// Releases all completions unrun. Threads: main run loop.
  void releaseCompletions();

 private:
  struct Finished {
    TransferID id;
    HTTPResult result;
  };

  void deliver();

  RunLoop& loop_;
  TransferID lastID_ = 0;
  std::unordered_map<TransferID, HTTPClient::Completion> completions_;
  /// Taken over, but not yet delivered. A member, so that a completion which runs the loop itself
  /// gets them too.
  std::deque<Finished> delivering_;

  std::mutex mutex_;
  std::vector<Finished> finished_;
};

}  // namespace xel
