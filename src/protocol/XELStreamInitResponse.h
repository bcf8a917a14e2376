#pragma once

#include <memory>
#include <string_view>

#include "xel/platform/JSONValue.h"
#include "xel/session/XELStreamRequest.h"

/// The ad server's answer to a stream-init request: the keys that are read, the test whether it can
/// start a session, and the rewriting of its manifest URL. The answer itself stays the JSON object
/// that came.
///
/// Threads: main run loop. Errors: no operation fails.
class XELStreamInitResponse final {
 public:
  XELStreamInitResponse() = delete;

  static constexpr std::string_view streamIDKey = "stream_id";
  static constexpr std::string_view streamManifestKey = "stream_manifest";
  static constexpr std::string_view streamTypeKey = "stream_type";
  static constexpr std::string_view subtitlesKey = "subtitles";
  static constexpr std::string_view id3EventsURLKey = "id3_events_url";
  static constexpr std::string_view timeEventsURLKey = "time_events_url";
  static constexpr std::string_view pollingFrequencyKey = "polling_frequency";
  static constexpr std::string_view prerollManifestKey = "preroll_manifest";

  /// Whether stream ID and manifest are present, of whatever type.
  static bool isValidStreamResponse(const xel::JSONValue& response) noexcept;

  /// The response with the request's manifest URL suffix at the end of the manifest URL, in the
  /// place of parameters of the same names; the same response where there is nothing to change or
  /// the manifest is not a valid URL.
  static xel::JSONValue configureStreamInitResponse_withRequest(
      const xel::JSONValue& response, const std::shared_ptr<XELStreamRequest>& request);
};
