#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

#include <curl/curl.h>

#include "backends/curl/CompletionBox.h"
#include "backends/curl/CurlHandles.h"
#include "backends/curl/CurlJob.h"
#include "backends/curl/CurlSettings.h"
#include "backends/curl/CurlTransfer.h"
#include "backends/curl/HostQueue.h"

namespace xel {

/// Takes jobs through their host's queue and one libcurl multi handle to their results.
/// I/O thread only, but for the constructor and `wakeUp`.
class CurlScheduler {
 public:
  /// `results` must outlive this.
  CurlScheduler(CurlSettings settings, CompletionBox& results);
  ~CurlScheduler();
  CurlScheduler(const CurlScheduler&) = delete;
  CurlScheduler& operator=(const CurlScheduler&) = delete;

  void add(CurlJob job);

  /// Does what can be done now. False when there is nothing more to do but wait.
  bool advance();
  /// Waits until there is something to do.
  void wait();
  /// Ends a wait, the present one or the next. Threads: any.
  void wakeUp();

 private:
  /// Nodes of the map, which stay where they are.
  using Host = std::pair<const std::string, HostQueue>;
  struct Active {
    Active(Host& to, CurlJob job, const CurlSettings& settings)
        : host(to), transfer(std::move(job), settings) {}
    Host& host;
    CurlTransfer transfer;
  };

  void giveUpExpired();
  void startWaiting();
  void start(Host& host, CurlJob job);
  bool finishEnded();
  void finish(CURL* handle, CURLcode code);

  const CurlSettings settings_;
  CompletionBox& results_;
  CurlMulti multi_;
  std::unordered_map<std::string, HostQueue> hosts_;
  std::unordered_map<CURL*, std::unique_ptr<Active>> active_;
};

}  // namespace xel
