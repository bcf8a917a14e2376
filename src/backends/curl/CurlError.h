#pragma once

#include <curl/curl.h>

#include "xel/platform/HTTPClient.h"

namespace xel {

/// Which of our errors a failed transfer is, as far as libcurl's code alone tells.
TransferError transferErrorFor(CURLcode code) noexcept;

}  // namespace xel
