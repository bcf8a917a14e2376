#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/Error.h"
#include "xel/platform/Export.h"

namespace xel {

struct HTTPHeader {
  std::string name;
  std::string value;
};

/// One request. A plain value; owned by whoever holds it.
struct XEL_EXPORT HTTPRequest {
  enum class CachePolicy {
    /// The client's own rules (RFC 9111 for a client that caches).
    useProtocol,
    /// Always ask the origin; a stored answer is neither used nor revalidated.
    reloadIgnoringLocalCache,
  };

  /// An absolute http or https URL (RFC 3986), sent as it is written.
  std::string url = {};
  std::string method = "GET";
  std::vector<HTTPHeader> headers = {};
  std::string body = {};
  /// From sending to the last byte of the answer; absent: `HTTPClient::defaultTimeout`.
  std::optional<std::chrono::milliseconds> timeout = {};
  CachePolicy cachePolicy = CachePolicy::useProtocol;
  /// The tracking event that this request reports: present for a ping, absent for a document.
  /// Never sent: it lets ledgers name the ping, and tells the client to throw the body of the
  /// answer away as it comes.
  std::optional<std::string> trackingEvent = {};

  /// The value of the first header of that name (case-insensitive, RFC 9110 section 5.1).
  std::optional<std::string_view> header(std::string_view name) const;

  /// Why this request must not be sent, as one sentence; absent when it may be. A client refuses
  /// such a request with `TransferError::invalidRequest`.
  ///
  /// The URL must be absolute, http or https, with a host, and valid by RFC 3986, but that "[" and
  /// "]" may stand in path, query and fragment, where tracking URLs carry macros. The method and
  /// header names must be tokens; header values must hold no control character.
  std::optional<std::string> refusal() const;
};

/// The answer's status line, header fields and body.
struct HTTPResponse {
  int status = 0;
  std::vector<HTTPHeader> headers = {};
  /// At most `HTTPClient::maxBodyBytes`; empty for a ping.
  std::string body = {};
};

/// Why a transfer failed: the codes of errors in `transferErrorDomain`. The numbers are stable.
enum class TransferError : int {
  unknown = 1,         ///< None of the others; the description tells.
  invalidRequest = 2,  ///< `HTTPRequest::refusal` refused it, or a redirect led to such a URL.
  timedOut = 3,        ///< No complete answer within the request's time-out.
  couldNotResolve = 4,
  couldNotConnect = 5,
  tlsFailed = 6,       ///< Handshake or certificate verification failed.
  tooLarge = 7,        ///< The body was over `HTTPClient::maxBodyBytes`.
  cancelled = 8,       ///< The client was shut down.
  connectionLost = 9,  ///< The connection broke before the answer was complete.
  badResponse = 10,    ///< What came back was not HTTP, or could not be decoded.
  tooManyRedirects = 11,
  proxyFailed = 12,
  redirectRefused = 13,  ///< A redirect led where `RedirectRule` lets none lead.
};

inline constexpr std::string_view transferErrorDomain = "XELTransferError";

/// A transfer error; `description` is the HTTP library's own text where it has one.
XEL_EXPORT std::shared_ptr<const Error> makeTransferError(TransferError code,
                                                          std::string description);

/// What became of a request: an error, or a response of any status.
struct HTTPResult {
  /// Present when no complete answer was received; `response` is then without meaning.
  std::shared_ptr<const Error> error = {};
  HTTPResponse response = {};
};

/// Sends requests. One client serves the whole process.
///
/// Threads: `send` is called on the main run loop, and completions run there too.
class XEL_EXPORT HTTPClient {
 public:
  using Completion = std::function<void(HTTPResult)>;

  /// A longer body is a transfer error (`TransferError::tooLarge`): 64 MiB.
  static constexpr std::size_t maxBodyBytes = std::size_t{64} << 20;

  /// Of a request that sets none.
  static constexpr std::chrono::milliseconds defaultTimeout{60'000};

  virtual ~HTTPClient();

  /// Starts a transfer and returns at once. `completion` runs exactly once, never before `send`
  /// returns, unless the client or the run loop ends first. Follows redirects to http and https.
  /// The completion is released once it has run.
  virtual void send(HTTPRequest request, Completion completion) = 0;
};

}  // namespace xel
