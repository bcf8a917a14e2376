#include "backends/curl/CurlError.h"

namespace xel {

TransferError transferErrorFor(CURLcode code) noexcept {
  switch (code) {
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
      return TransferError::invalidRequest;
    case CURLE_OPERATION_TIMEDOUT:
      return TransferError::timedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
      return TransferError::couldNotResolve;
    case CURLE_COULDNT_CONNECT:
      return TransferError::couldNotConnect;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CLIENTCERT:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_ISSUER_ERROR:
      return TransferError::tlsFailed;
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_HTTP2_STREAM:
    case CURLE_SEND_FAIL_REWIND:
      return TransferError::connectionLost;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_HTTP2:
    case CURLE_BAD_CONTENT_ENCODING:
      return TransferError::badResponse;
    case CURLE_TOO_MANY_REDIRECTS:
      return TransferError::tooManyRedirects;
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_PROXY:
      return TransferError::proxyFailed;
    default:
      return TransferError::unknown;
  }
}

}  // namespace xel
