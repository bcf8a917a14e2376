#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/Error.h"
#include "xel/platform/Export.h"
#include "xel/platform/JSONValue.h"

/// Keys of an entry of the subtitles list; the values are texts.
inline constexpr std::string_view kXELSubtitleLanguage = "language";
/// Where the track stands as WebVTT.
inline constexpr std::string_view kXELSubtitleWebVTT = "webvtt";
/// Where the track stands as TTML.
inline constexpr std::string_view kXELSubtitleTTML = "ttml";

namespace xel {

/// Timed metadata at one moment: item key (for ID3, the frame identifier such as "TXXX") to text.
using TimedMetadata = std::map<std::string, std::string, std::less<>>;

}  // namespace xel

class XELVideoDisplay;

/// What a video display reports. The library's stream monitor is this delegate.
///
/// Threads: main run loop. All operations are required.
class XEL_EXPORT XELVideoDisplayDelegate {
 public:
  virtual ~XELVideoDisplayDelegate();

  /// The timed metadata of the current stream changed. The map holds what is now there, and may be
  /// empty; of several items with one key it holds the last.
  virtual void videoDisplay_didReceiveTimedMetadata(XELVideoDisplay& display,
                                                    const xel::TimedMetadata& metadata) = 0;
  /// The playhead, in seconds of stream time (ads included) from the start of the current stream;
  /// finite.
  /// Sent periodically while the display follows the stream; every 0.2 s is usual.
  virtual void videoDisplay_didProgressToTime(XELVideoDisplay& display, double time) = 0;
  /// The current stream cannot be played. The error may be null.
  virtual void videoDisplay_didFailWithError(XELVideoDisplay& display,
                                             const std::shared_ptr<const xel::Error>& error) = 0;
  /// The stream is ready, and playback is about to start. Once for each load.
  virtual void videoDisplayIsReadyForPlayback(XELVideoDisplay& display) = 0;
};

/// A media player, as the library sees it. A host application implements it over its own player.
///
/// The calls that a delegate sees for one load: ready; then progress, with timed metadata between
/// (metadata may also come before ready); then the end of the stream, which is not reported, or
/// one failure.
/// Ownership: held by the stream manager and its monitor. A display must survive that its owner
/// lets go of it inside one of its own reports: hold `shared_from_this` for the report.
/// Threads: main run loop, in both directions; reports are made from the display's own event
/// handling.
class XEL_EXPORT XELVideoDisplay {
 public:
  virtual ~XELVideoDisplay();

  /// Replaces what is showing with this stream and plays it by itself once it is ready. May be
  /// called again at any time, also inside a report.
  /// @param url the manifest's URL, with the request's suffix for the main stream.
  /// @param subtitles side-loaded tracks, as they came; often empty. See `kXELSubtitleLanguage`.
  virtual void loadURL_withSubtitles(const std::string& url,
                                     const std::vector<xel::JSONValue>& subtitles) = 0;

  /// Null when there is none. The display does not keep its delegate alive, and drops its reports
  /// while there is none.
  virtual std::shared_ptr<XELVideoDisplayDelegate> delegate() const = 0;
  virtual void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) = 0;
};
