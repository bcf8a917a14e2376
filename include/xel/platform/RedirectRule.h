#pragma once

namespace xel {

/// Where a server may send a request on to. Each rule forbids what the one before it forbids, and
/// more. No rule allows other schemes than http and https, or more than 16 redirects.
///
/// A refused redirect fails with `TransferError::redirectRefused`. Its target is judged by the
/// address that is connected to, before anything of the request is sent there. Over a proxy all
/// targets count as being on the internet.
enum class RedirectRule {
  anywhere,
  /// The default. Not nearer to this machine than the server that redirects: not from the internet
  /// into a private network (nor link-local addresses, nor those shared behind a provider, RFC
  /// 6598), and from neither to this machine. Pings alone may be redirected from https to http.
  notInward,
  /// To https URLs only.
  httpsOnly,
  none,
};

}  // namespace xel
