#include "backends/curl/CurlTransfer.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "backends/curl/CurlError.h"

namespace xel {
namespace {

/// The header in the form that libcurl wants: a header without a value ends in a semicolon, as a
/// colon with nothing after it would remove the header.
std::string headerLine(const HTTPHeader& header) {
  const bool blank = header.value.find_first_not_of(" \t") == std::string::npos;
  return blank ? header.name + ';' : header.name + ": " + header.value;
}

template <typename T>
T info(CURL* easy, CURLINFO what) {
  T value{};
  curl_easy_getinfo(easy, what, &value);
  return value;
}

/// The header fields of the last answer, after all redirects.
std::vector<HTTPHeader> answerHeaders(CURL* easy) {
  std::vector<HTTPHeader> headers;
  curl_header* header = nullptr;
  while ((header = curl_easy_nextheader(easy, CURLH_HEADER, -1, header)) != nullptr) {
    headers.push_back({header->name, header->value});
  }
  return headers;
}

}  // namespace

CurlTransfer::CurlTransfer(CurlJob job, const CurlSettings& settings)
    : job_(std::move(job)),
      ping_(job_.request.trackingEvent.has_value()),
      redirects_(settings.redirects, ping_),
      easy_(curl_easy_init()) {
  if (!easy_) throw std::bad_alloc();
  set(CURLOPT_ERRORBUFFER, errorText_.data());
  set(CURLOPT_WRITEFUNCTION, &receive);
  set(CURLOPT_WRITEDATA, this);
  set(CURLOPT_PREREQFUNCTION, &beforeSending);
  set(CURLOPT_PREREQDATA, this);
  set(CURLOPT_URL, job_.request.url.c_str());
  set(CURLOPT_PATH_AS_IS, 1L);
  setMethodAndBody();
  setHeaders();
  setLimits(settings.caFile);
}

template <typename T>
void CurlTransfer::set(CURLoption option, T value) {
  curl_easy_setopt(easy_.get(), option, value);
}

void CurlTransfer::setMethodAndBody() {
  const std::string& method = job_.request.method;
  const std::string& body = job_.request.body;
  if (!body.empty() || method == "POST") {
    set(CURLOPT_POST, 1L);
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    set(CURLOPT_POSTFIELDS, body.data());
  } else if (method == "HEAD") {
    set(CURLOPT_NOBODY, 1L);
  }
  const bool implied = method == (body.empty() ? "GET" : "POST") || method == "POST" ||
                       (method == "HEAD" && body.empty());
  if (!implied) set(CURLOPT_CUSTOMREQUEST, method.c_str());
}

void CurlTransfer::setHeaders() {
  const auto append = [this](const std::string& line) {
    curl_slist* longer = curl_slist_append(headers_.get(), line.c_str());
    if (longer == nullptr) throw std::bad_alloc();
    static_cast<void>(headers_.release());
    headers_.reset(longer);
  };
  // Else a long body would wait for a "100 Continue" that many servers do not send.
  append("Expect:");
  for (const HTTPHeader& header : job_.request.headers) append(headerLine(header));
  set(CURLOPT_HTTPHEADER, headers_.get());
  // The body of a ping's answer is thrown away, so there is nothing to gain from a compressed one.
  if (!ping_) set(CURLOPT_ACCEPT_ENCODING, "");
}

void CurlTransfer::setLimits(const std::string& caFile) {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(job_.deadline - CurlJob::Clock::now());
  // To libcurl 0 means no time-out at all.
  set(CURLOPT_TIMEOUT_MS, std::max(1L, static_cast<long>(left.count())));
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  set(CURLOPT_FOLLOWLOCATION, 1L);
  set(CURLOPT_MAXREDIRS, 16L);
  set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  // Left to the system's settings it might be less (RFC 8996).
  set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  set(CURLOPT_NOSIGNAL, 1L);
  // Else the end of the client would wait for a stalled DNS look-up.
  set(CURLOPT_QUICK_EXIT, 1L);
  if (!caFile.empty()) set(CURLOPT_CAINFO, caFile.c_str());
}

int CurlTransfer::beforeSending(void* transfer, char* address, char* localAddress, int port, int) {
  auto& self = *static_cast<CurlTransfer*>(transfer);
  const bool allowed = self.redirects_.allows(
      {info<const char*>(self.handle(), CURLINFO_EFFECTIVE_URL), address, localAddress, port,
       info<long>(self.handle(), CURLINFO_REDIRECT_COUNT) > 0});
  return allowed ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

std::size_t CurlTransfer::receive(char* data, std::size_t size, std::size_t count, void* transfer) {
  auto& self = *static_cast<CurlTransfer*>(transfer);
  const std::size_t bytes = size * count;
  if (self.ping_) return bytes;
  if (bytes > HTTPClient::maxBodyBytes - self.body_.size()) {
    self.tooLarge_ = true;
    return 0;
  }
  self.body_.append(data, bytes);
  return bytes;
}

TransferError CurlTransfer::errorFor(CURLcode code) const {
  if (tooLarge_) return TransferError::tooLarge;
  if (!redirects_.refusal().empty()) return TransferError::redirectRefused;
  if (code == CURLE_UNSUPPORTED_PROTOCOL) {
    // Either a redirect led to another scheme, or the answer was not HTTP/1 or later.
    const std::string_view url = info<const char*>(handle(), CURLINFO_EFFECTIVE_URL);
    if (url.starts_with("http")) return TransferError::badResponse;
  }
  return transferErrorFor(code);
}

std::string CurlTransfer::reasonFor(CURLcode code) const {
  if (tooLarge_) return "The answer is longer than the client accepts.";
  if (!redirects_.refusal().empty()) return redirects_.refusal();
  // libcurl calls both by the same name.
  if (code == CURLE_OUT_OF_MEMORY) return "A header is too long, or there is no memory left.";
  return errorText_[0] != '\0' ? errorText_.data() : curl_easy_strerror(code);
}

HTTPResult CurlTransfer::takeResult(CURLcode code) {
  HTTPResult result;
  if (code != CURLE_OK) {
    result.error = makeTransferError(errorFor(code), reasonFor(code));
    return result;
  }
  result.response.status = static_cast<int>(info<long>(handle(), CURLINFO_RESPONSE_CODE));
  result.response.headers = answerHeaders(handle());
  result.response.body = std::move(body_);
  return result;
}

std::optional<bool> CurlTransfer::answeredOverHTTP2() const {
  if (info<long>(handle(), CURLINFO_REDIRECT_COUNT) > 0) return std::nullopt;
  return info<long>(handle(), CURLINFO_HTTP_VERSION) == CURL_HTTP_VERSION_2_0;
}

}  // namespace xel
