#include "backends/curl/HandlePool.h"

#include <new>
#include <utility>

namespace xel {
namespace {

constexpr std::size_t mostIdle = 64;

}  // namespace

CurlEasy HandlePool::take() {
  CurlEasy handle;
  if (idle_.empty()) {
    handle.reset(curl_easy_init());
    if (!handle) throw std::bad_alloc();
  } else {
    handle = std::move(idle_.back());
    idle_.pop_back();
  }
  prepare(handle.get());
  return handle;
}

void HandlePool::giveBack(CurlEasy handle) {
  if (idle_.size() >= mostIdle) return;
  // Also takes back libcurl's count of lost connections: after five in the life of a handle it
  // would no longer send a request again.
  curl_easy_reset(handle.get());
  idle_.push_back(std::move(handle));
}

void HandlePool::prepare(CURL* easy) const {
  curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 16L);
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  // Left to the system's settings it might be less (RFC 8996).
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  // Else the end of the client would wait for a stalled DNS look-up.
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
  if (!settings_.caFile.empty()) {
    curl_easy_setopt(easy, CURLOPT_CAINFO, settings_.caFile.c_str());
  }
}

}  // namespace xel
