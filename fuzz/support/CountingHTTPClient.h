#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "xel/platform/HTTPClient.h"

#include "fuzz/support/Require.h"

namespace xel::fuzz {

/// Passes requests on to another client and requires that each is completed once at the most.
class CountingHTTPClient final : public HTTPClient {
 public:
  explicit CountingHTTPClient(std::shared_ptr<HTTPClient> client) : client_(std::move(client)) {}

  void send(HTTPRequest request, Completion completion) override {
    const bool isStreamRequest = request.method == "POST";
    ++counts_->sent;
    counts_->streamRequestsOpen += isStreamRequest;
    client_->send(std::move(request), [counts = counts_, isStreamRequest,
                                       completion = std::move(completion),
                                       completed = false](HTTPResult result) mutable {
      require(!std::exchange(completed, true), "a request completed twice");
      require(!result.error || !result.error->domain.empty(), "a transfer error without a domain");
      ++counts->completed;
      completion(std::move(result));
      counts->streamRequestsOpen -= isStreamRequest;
    });
  }

  std::size_t open() const { return counts_->sent - counts_->completed; }
  /// Counting those whose completion is running.
  std::size_t streamRequestsOpen() const { return counts_->streamRequestsOpen; }

 private:
  struct Counts {
    std::size_t sent = 0, completed = 0, streamRequestsOpen = 0;
  };
  const std::shared_ptr<HTTPClient> client_;
  const std::shared_ptr<Counts> counts_ = std::make_shared<Counts>();
};

}  // namespace xel::fuzz
