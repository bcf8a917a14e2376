#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "xel/model/XELAd.h"
#include "xel/model/XELAdBreakInfo.h"
#include "xel/model/XELCuepoint.h"
#include "xel/platform/Error.h"
#include "xel/platform/JSONValue.h"

namespace xel {

// What can happen in a session, as `xel play` shows it. `name` is the event's name in JSON lines.

struct StreamInitialized {
  static constexpr std::string_view name = "didInitializeStream";
  std::string streamID;
};

struct StreamLoaded {
  static constexpr std::string_view name = "loadURL";
  std::string url;
  std::vector<JSONValue> subtitles;
};

/// The playhead jumps because `--seek` or a key asks for it.
struct SeekStarted {
  static constexpr std::string_view name = "seek";
  /// Seconds of stream time.
  double to;
};

struct ReadyForPlayback {
  static constexpr std::string_view name = "streamManagerIsReadyForPlayback";
};

struct BreakEvent {
  std::string_view name;
  std::shared_ptr<XELAdBreakInfo> info;
};

struct AdEvent {
  std::string_view name;
  std::shared_ptr<XELAd> ad;
};

struct AdCountdown {
  static constexpr std::string_view name = "didCountdownTo";
  std::shared_ptr<XELAd> ad;
  /// Seconds.
  double remaining;
};

struct CuepointsUpdated {
  static constexpr std::string_view name = "didUpdateCuepoints";
  std::vector<std::shared_ptr<XELCuepoint>> cuepoints;
};

struct ErrorReceived {
  static constexpr std::string_view name = "didReceiveError";
  std::shared_ptr<const Error> error;
};

struct PingSent {
  static constexpr std::string_view name = "ping";
  std::string pingEvent;
  std::string url;
};

struct PingAnswered {
  static constexpr std::string_view name = "pingResult";
  std::string pingEvent;
  std::string url;
  /// Null when there was an answer; `status` is its HTTP status.
  std::shared_ptr<const Error> error;
  int status;
  double milliseconds;
};

struct TimeConverted {
  static constexpr std::string_view name = "conversion";
  /// All in seconds: the time asked for, taken as stream time and as content time.
  double time;
  double contentTime;
  double streamTime;
  std::shared_ptr<XELCuepoint> previousCuepoint;
};

using PlayEvent = std::variant<StreamInitialized, StreamLoaded, SeekStarted, ReadyForPlayback,
                               BreakEvent, AdEvent, AdCountdown, CuepointsUpdated, ErrorReceived,
                               PingSent, PingAnswered, TimeConverted>;

}  // namespace xel
