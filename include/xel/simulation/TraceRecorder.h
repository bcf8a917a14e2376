#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "xel/display/XELVideoDisplay.h"
#include "xel/platform/Export.h"
#include "xel/platform/Platform.h"
#include "xel/session/XELStreamManagerDelegate.h"
#include "xel/session/XELStreamRequest.h"

namespace xel::simulation {

/// Records one session as a trace: what the library is told, what it does, and when. `TraceReplay`
/// runs it again anywhere; `xel replay`, `xel report` and `xel inspect` read it.
///
///     TraceRecorder recorder([&file](std::string_view line) { file << line << std::flush; });
///     Platform::install(recorder.record(Platform::makeDefault(options)));
///     auto manager = XELStreamManager::initWithVideoDisplay(recorder.record(display));
///     manager->setDelegate(recorder.record(host));
///     recorder.begin(request);
///     manager->requestStream(request);
///     ...
///     recorder.noteRelease();
///     manager = nullptr;
///
/// Never in the trace: API key, auth token, advertising identifier, stream activity monitor id, the
/// values of the manifest URL suffix and of the ad tag parameters that are not about the stream,
/// and those of the headers Authorization, Cookie and Set-Cookie. Each has the same replacement
/// wherever it occurs. Single values of "cust_params" and of the suffix that are short, or words of
/// the protocol, are replaced under their own names only.
///
/// What is recorded behaves as before: each call is passed on at once, on the same thread. All that
/// the library does on the platform between `begin` and the recorder's end is taken for the
/// session's own, so record one session at a time.
/// Ownership: what `record` gives may outlive the recorder, and then only passes on. It may be let
/// go of inside any call. Threads: main run loop. Errors: no operation fails.
class XEL_EXPORT TraceRecorder final {
 public:
  /// Takes a line of the trace with its line end. Should keep it safe at once, since a trace is
  /// most wanted after a crash; must not call the library.
  using Sink = std::function<void(std::string_view line)>;

  struct Options {
    /// Replaces the query values of all URLs too, in documents as in requests; names and macros
    /// stay.
    bool redactURLs = false;
    /// Seconds of a steady clock; absent: the system's.
    std::function<double()> now = nullptr;
  };

  explicit TraceRecorder(Sink sink);
  TraceRecorder(Sink sink, Options options);
  ~TraceRecorder();
  TraceRecorder(const TraceRecorder&) = delete;
  TraceRecorder& operator=(const TraceRecorder&) = delete;

  /// The platform to install. All members must be present.
  Platform record(Platform platform);
  /// The display for the manager; becomes the delegate of the display given. Neither is null.
  std::shared_ptr<XELVideoDisplay> record(std::shared_ptr<XELVideoDisplay> display);
  /// The delegate for the manager. The recorder keeps it alive, so let go of the recorder only when
  /// you need no more calls. They are recorded whether or not the host's own delegate still lives.
  std::weak_ptr<XELStreamManagerDelegate> record(std::weak_ptr<XELStreamManagerDelegate> host);

  /// Writes the first line. Call it once, right before the request is made; what happens earlier is
  /// not recorded. Asks the installed platform for its facts.
  void begin(const std::shared_ptr<XELStreamRequest>& request);

  /// The host is about to let go of the manager. What this ends in the library belongs to the
  /// session, so a replay must know.
  void noteRelease();

  // For readers; a replay makes no use of them.

  /// The viewer, or the host, moves the playhead.
  /// @param to seconds of stream time.
  void noteSeek(double to);
  void notePause();
  void noteResume();
  /// Live segments passed by unseen.
  void noteMissed(std::uint64_t segments);
  /// The session is over, with what the host counts as its exit status. Nothing more is recorded.
  void noteEnd(int exitStatus);

 private:
  struct State;
  const std::shared_ptr<State> state_;
};

}  // namespace xel::simulation
