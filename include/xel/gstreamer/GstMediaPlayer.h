#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "xel/platform/Export.h"
#include "xel/platform/MediaPlayer.h"
#include "xel/platform/RunLoop.h"

/// GStreamer's own type; include <gst/gst.h> to make one.
typedef struct _GstElement GstElement;  // NOLINT(bugprone-reserved-identifier)

namespace xel {

/// The domain of the errors of a `GstMediaPlayer`.
inline constexpr std::string_view gstPlayerErrorDomain = "XELGstPlayerError";

/// The codes of errors in `gstPlayerErrorDomain`.
enum class GstPlayerError : int {
  failed = 1,       ///< The server or the stream has a fault, told in the description.
  notAStream = 2,   ///< What stands behind the URL is no HLS stream.
  timedOut = 3,     ///< The server stopped answering.
  unavailable = 4,  ///< A part of GStreamer is missing on this system.
};

/// Where the sound and the pictures go.
enum class GstOutput {
  automatic,  ///< To what this system has: a window of its own and the sound card.
  none,       ///< Nowhere, at the speed of showing them; needs no display or sound card.
};

/// What a GStreamer player is made from; every member may be left out.
struct GstMediaPlayerOptions {
  GstOutput output = GstOutput::automatic;
  /// Elements to show pictures and sound with instead; null: as `output` says. The player takes a
  /// reference of its own. An item waits with its start until the earlier one has let go of them.
  GstElement* videoSink = nullptr;
  GstElement* audioSink = nullptr;
  /// A PEM file of the certificate authorities to trust for https; empty: the system's. GStreamer
  /// asks GLib for them, so this holds for the whole process and every player in it.
  std::string caFile = {};
  /// Where reports are made; null: the installed platform's. Any run loop will do, since the player
  /// does its work on threads of its own.
  std::shared_ptr<RunLoop> mainRunLoop = nullptr;
};

/// A media player for HLS over GStreamer, and what a host does with it beside the display: pausing,
/// seeking, and reading the time.
///
/// Every call returns at once, also while a server hangs; what it asks for happens soon after. A
/// stream that cannot be played turns its item's status to failed, once, with an error that names
/// the URL and the cause.
/// Ownership: shared. It may be let go of at any moment. Threads: main run loop.
class XEL_EXPORT GstMediaPlayer : public MediaPlayer {
 public:
  virtual void pause() = 0;
  /// Whether `play` was called last, and not `pause`; also while the stream is still loading.
  virtual bool isPlaying() const = 0;
  /// Moves the playhead, exactly; of several calls during one move the last one counts. Before the
  /// item is ready it is kept until then.
  /// @param seconds of stream time; less than 0 counts as 0, and what is at the end or beyond it as
  /// the last 0.1 s.
  virtual void seek(double seconds) = 0;
  /// Seconds; absent while it is unknown, and for live streams.
  virtual std::optional<double> duration() const = 0;
};

/// Makes a player. Null, with a line in the log, when GStreamer cannot be started or lacks the
/// parts that every stream needs. The first call in a process starts GStreamer, which can take a
/// second after its plugins changed.
XEL_EXPORT std::shared_ptr<GstMediaPlayer> makeGstMediaPlayer(
    const GstMediaPlayerOptions& options = {});

}  // namespace xel
