#pragma once

#include <array>
#include <optional>
#include <string>

#include <curl/curl.h>

#include "xel/platform/HTTPClient.h"

#include "backends/curl/CurlHandles.h"
#include "backends/curl/CurlJob.h"
#include "backends/curl/CurlSettings.h"
#include "backends/curl/RedirectGuard.h"

namespace xel {

/// One request under way, and what has been received of its answer. I/O thread only.
class CurlTransfer {
 public:
  CurlTransfer(CurlJob job, const CurlSettings& settings);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;

  CURL* handle() const noexcept { return easy_.get(); }
  TransferID id() const noexcept { return job_.id; }
  bool isPing() const noexcept { return ping_; }

  /// What became of the request; takes the body along. `code` is what libcurl ended with.
  HTTPResult takeResult(CURLcode code);

  /// Whether the host that the request names answers over HTTP/2; absent if another host answered.
  std::optional<bool> answeredOverHTTP2() const;

 private:
  static int beforeSending(void* transfer, char* address, char* localAddress, int port, int);
  static std::size_t receive(char* data, std::size_t size, std::size_t count, void* transfer);

  template <typename T>
  void set(CURLoption option, T value);
  void setMethodAndBody();
  void setHeaders();
  void setLimits(const std::string& caFile);
  TransferError errorFor(CURLcode code) const;
  std::string reasonFor(CURLcode code) const;

  const CurlJob job_;
  const bool ping_;
  CurlList headers_;
  std::array<char, CURL_ERROR_SIZE> errorText_{};
  std::string body_;
  bool tooLarge_ = false;
  RedirectGuard redirects_;
  CurlEasy easy_;
};

}  // namespace xel
