#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "xel/platform/HTTPClient.h"

namespace xel {

/// Told of each tracking ping. Threads: main run loop.
class PingObserver {
 public:
  virtual ~PingObserver() = default;
  virtual void pingWillBeSent(const std::string& event, const std::string& url) = 0;
  /// Called after the library heard of the result; the ping no longer counts as outstanding.
  virtual void pingWasAnswered(const std::string& event, const std::string& url,
                               const HTTPResult& result, double milliseconds) = 0;
};

/// An HTTP client that tells of the pings which pass through it; other requests pass unnoticed.
class ObservingHTTPClient final : public HTTPClient {
 public:
  /// @param now seconds of a steady clock.
  ObservingHTTPClient(std::shared_ptr<HTTPClient> client, std::weak_ptr<PingObserver> observer,
                      std::function<double()> now);

  void send(HTTPRequest request, Completion completion) override;
  /// Pings that were sent and have no result yet.
  std::size_t outstandingPings() const noexcept { return *outstanding_; }

 private:
  const std::shared_ptr<HTTPClient> client_;
  const std::weak_ptr<PingObserver> observer_;
  const std::function<double()> now_;
  const std::shared_ptr<std::size_t> outstanding_ = std::make_shared<std::size_t>(0);
};

}  // namespace xel
