#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "xel/platform/HTTPClient.h"

namespace xel {

/// Told of each tracking ping, and when other requests are answered. Threads: main run loop.
class RequestObserver {
 public:
  virtual ~RequestObserver() = default;
  virtual void pingWillBeSent(const std::string& event, const std::string& url) = 0;
  /// Called after the library heard of the result; the ping no longer counts as outstanding.
  virtual void pingWasAnswered(const std::string& event, const std::string& url,
                               const HTTPResult& result, double milliseconds) = 0;
  /// Called after the library heard of the result of a request that is no ping.
  virtual void requestWasAnswered() = 0;
};

/// An HTTP client that tells of the requests which pass through it.
class ObservingHTTPClient final : public HTTPClient {
 public:
  /// @param now seconds of a steady clock.
  ObservingHTTPClient(std::shared_ptr<HTTPClient> client, std::weak_ptr<RequestObserver> observer,
                      std::function<double()> now);

  void send(HTTPRequest request, Completion completion) override;
  /// Pings that were sent and have no result yet.
  std::size_t outstandingPings() const noexcept { return outstanding_->pings; }
  /// Other requests that were sent and have no result yet.
  std::size_t outstandingRequests() const noexcept { return outstanding_->others; }

 private:
  struct Outstanding {
    std::size_t pings = 0;
    std::size_t others = 0;
  };

  void sendPing(HTTPRequest request, Completion completion);

  const std::shared_ptr<HTTPClient> client_;
  const std::weak_ptr<RequestObserver> observer_;
  const std::function<double()> now_;
  const std::shared_ptr<Outstanding> outstanding_ = std::make_shared<Outstanding>();
};

}  // namespace xel
