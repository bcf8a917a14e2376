#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "xel/platform/Export.h"
#include "xel/platform/HTTPClient.h"
#include "xel/simulation/VirtualRunLoop.h"

namespace xel::simulation {

struct CannedAnswer {
  int status = 200;
  std::string body = {};
  /// Seconds from sending to the completion, on the virtual clock.
  double delay = 0;
};

/// The ad server as a host's tests need it: an HTTP client that answers from a list.
///
/// URLs are matched exactly. What is set for one URL is used one after another, and the last stays
/// in use. A request's time-out holds here too, on the virtual clock. Completions run in
/// `VirtualRunLoop::runUntilIdle` and `advance`; redirects are not followed.
/// Threads: main run loop. Errors: as of any `HTTPClient`.
class XEL_EXPORT CannedAdServer final : public HTTPClient {
 public:
  struct Sent {
    HTTPRequest request;
    /// Of sending, on the virtual clock.
    double time = 0;
  };

  explicit CannedAdServer(std::shared_ptr<VirtualRunLoop> loop);
  ~CannedAdServer() override;

  void answer(std::string url, CannedAnswer answer);
  /// The transfer fails after `delay` seconds.
  void fail(std::string url, TransferError error, double delay = 0);
  /// No answer ever comes: the transfer fails when its time-out has run out.
  void hang(std::string url);
  /// Takes back what was set for the URL; requests under way keep what they have.
  void forget(const std::string& url);

  /// For documents that are not listed; 404 until set.
  void answerOtherDocuments(CannedAnswer answer);
  /// For tracking pings that are not listed; 204 until set.
  void answerOtherPings(CannedAnswer answer);

  /// Every request, refused ones too, in the order of sending.
  const std::vector<Sent>& requests() const noexcept { return requests_; }
  /// The requests that report a tracking event.
  std::vector<Sent> pings() const;
  /// Requests whose completion has not run yet.
  std::size_t outstanding() const noexcept;

  /// Releases the completions of outstanding requests without running them.
  void clear();

  void send(HTTPRequest request, Completion completion) override;

 private:
  struct Outcome {
    std::optional<TransferError> error;
    CannedAnswer answer;
  };
  struct Script {
    std::vector<Outcome> outcomes;
    std::size_t used = 0;
  };
  using Outstanding = std::map<std::uint64_t, Completion>;

  Outcome nextOutcome(const HTTPRequest& request);

  const std::shared_ptr<VirtualRunLoop> loop_;
  std::map<std::string, Script> scripts_;
  CannedAnswer otherDocuments_;
  CannedAnswer otherPings_;
  std::vector<Sent> requests_;
  std::shared_ptr<Outstanding> outstanding_;
};

}  // namespace xel::simulation
