#pragma once

#include <optional>
#include <string>

namespace xel::serve {

enum class StreamKind { live, vod };

/// What a client must show; without either, any client may have a stream.
struct Credentials {
  std::optional<std::string> apiKey;
  std::optional<std::string> authToken;
};

/// The parts of a stream request that the server looks at; an absent header is empty.
struct ReceivedStreamRequest {
  StreamKind kind = StreamKind::vod;
  std::string userAgent;
  std::string authorization;
  std::string body;
};

struct Refusal {
  int status;
  std::string sentence;
};

/// Why the ad server does not open a stream; absent when it does.
std::optional<Refusal> refusalOf(const ReceivedStreamRequest& request,
                                 const Credentials& credentials);

}  // namespace xel::serve
