#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <sys/types.h>

#include "backends/curl/CompletionBox.h"
#include "backends/curl/CurlJob.h"
#include "backends/curl/CurlScheduler.h"

namespace xel {

/// The I/O thread of one client. Stopped when destroyed, and at process exit if that is earlier.
class CurlThread {
 public:
  /// `results` must outlive this.
  CurlThread(CurlSettings settings, CompletionBox& results);
  ~CurlThread();
  CurlThread(const CurlThread&) = delete;
  CurlThread& operator=(const CurlThread&) = delete;

  /// Hands a job to the thread; false if it has been stopped, or never started. Threads: any.
  bool submit(CurlJob job);

  /// What stands in the way of a job that was not taken.
  std::shared_ptr<const Error> reasonAgainst() const;

  /// Gives up everything under way and ends the thread. Once it returns, no result comes any more.
  /// Does nothing the second time.
  void stop();

 private:
  void run();
  bool takeJobs();
  bool mayWait();
  /// In a forked child, which has no such thread: leaves alone what the parent still uses.
  void abandon();

  const pid_t process_;
  /// The thread's own while it runs, but for waking it up.
  std::unique_ptr<CurlScheduler> scheduler_;
  std::thread thread_;

  std::mutex mutex_;
  std::deque<CurlJob> submitted_;
  bool stopping_ = false;
  /// Whether a job must wake the thread up, which costs more than the rest of handing it over.
  bool waiting_ = false;
  /// Where the thread could not be started.
  std::string whyNotStarted_;
};

}  // namespace xel
