#pragma once

#include <memory>

#include "xel/platform/HTTPClient.h"
#include "xel/platform/RunLoop.h"

#include "backends/curl/CurlSettings.h"

namespace xel {

/// The HTTP client over libcurl: HTTP/1.1 and HTTP/2, TLS always verified, proxies as the
/// environment has them (http_proxy, no_proxy and so on), no cache and no cookies.
///
/// To one scheme, host and port at most 6 requests are under way at a time, or 64 once the host
/// has answered over HTTP/2; one more where all of them are pings and a document is to be fetched,
/// which so waits for no ping. The others wait, those with the earliest time-out first. A
/// request's time-out covers that wait and the transfer.
///
/// One I/O thread of its own does all transfers. It runs no host code but `RunLoop::post` and
/// blocks all signals. Completions stay on the main thread throughout: they run there, and they
/// are released there.
///
/// Ends when it is destroyed, and at process exit: what is under way is given up at once and not
/// reported; a later `send` completes with `TransferError::cancelled`. A forked child must make a
/// client of its own; it may destroy the one that it has inherited, and do nothing else with it.
std::shared_ptr<HTTPClient> makeCurlHTTPClient(CurlSettings settings,
                                               std::shared_ptr<RunLoop> mainRunLoop);

}  // namespace xel
