#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <httplib.h>

#include "serve/Fault.h"
#include "serve/FaultList.h"

namespace xel::serve {

/// The status of a response that is never sent: its connection has been cut off.
inline constexpr int noAnswer = 0;

/// Answers requests as they should not be answered. Threads: any.
class FaultInjector {
 public:
  /// Told on the thread that answers when a fault strikes, and again when that costs the client the
  /// answer after all.
  using Report = std::function<void(const Fault& fault, bool isAnswerLost)>;

  FaultInjector(std::vector<Fault> faults, Report report);

  /// The handler with the faults of its endpoint.
  httplib::Server::Handler wrap(Endpoint endpoint, httplib::Server::Handler handler);
  /// `GET /faults` and `PUT /faults`.
  void addRoutes(httplib::Server& server);
  /// Ends every answer that is held back.
  void stop();

 private:
  using Seconds = std::chrono::duration<double>;

  void answer(const Fault& fault, const httplib::Server::Handler& handler,
              const httplib::Request& request, httplib::Response& response);
  void dripSlowly(const Fault& fault, const httplib::Request& request, httplib::Response& response);
  /// False when the client has left before, or the server stops.
  bool wait(Seconds time, const httplib::Request& request);

  FaultList faults_;
  const Report report_;
  std::mutex mutex_;
  std::condition_variable stops_;
  bool isStopping_ = false;  ///< Guarded by mutex_.
};

}  // namespace xel::serve
