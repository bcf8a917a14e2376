#include "backends/curl/LiveThreads.h"

#include <mutex>
#include <unordered_set>

#include <curl/curl.h>

#include "backends/curl/CurlThread.h"

namespace xel {
namespace {

struct Registry {
  std::mutex mutex;
  std::unordered_set<CurlThread*> threads;
  bool exiting = false;
};

/// Never destroyed: clients may be made and destroyed as late as in static destructors.
Registry& registry() {
  static Registry& instance = *new Registry;
  return instance;
}

struct StopAtExit {
  ~StopAtExit() {
    const std::lock_guard lock(registry().mutex);
    registry().exiting = true;
    for (CurlThread* thread : registry().threads) thread->stop();
  }
};

/// Exit handlers run in reverse order, so the hook must follow libcurl's initialisation, which
/// registers the TLS library's handler.
void initialiseOnce() {
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
  static const StopAtExit hook;
  static_cast<void>(initialised);
}

}  // namespace

bool LiveThreads::add(CurlThread& thread) {
  const std::lock_guard lock(registry().mutex);
  if (registry().exiting) return false;
  initialiseOnce();
  registry().threads.insert(&thread);
  return true;
}

void LiveThreads::remove(CurlThread& thread) {
  const std::lock_guard lock(registry().mutex);
  registry().threads.erase(&thread);
}

}  // namespace xel
