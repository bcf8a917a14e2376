#pragma once

#include <memory>

#include <curl/curl.h>

namespace xel {

template <auto release>
struct CurlDeleter {
  template <typename T>
  void operator()(T* handle) const noexcept {
    release(handle);
  }
};

using CurlEasy = std::unique_ptr<CURL, CurlDeleter<curl_easy_cleanup>>;
using CurlMulti = std::unique_ptr<CURLM, CurlDeleter<curl_multi_cleanup>>;
using CurlList = std::unique_ptr<curl_slist, CurlDeleter<curl_slist_free_all>>;

}  // namespace xel
