#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/HTTPClient.h"
#include "xel/platform/RunLoop.h"

#include "play/StreamPlayer.h"
#include "play/StreamTimeline.h"

namespace xel {

/// The domain of the errors that a clock display makes itself; transfer errors are passed on as
/// they are.
inline constexpr std::string_view clockPlayerErrorDomain = "XELClockPlayerError";

/// The codes of errors in `clockPlayerErrorDomain`.
enum class ClockPlayerError : int {
  refused = 1,       ///< The manifest was answered with an HTTP status of 400 or more.
  notAPlaylist = 2,  ///< What was answered is no media playlist.
};

/// A player without pictures: it fetches the manifest and lets a clock run over it.
///
/// Tick n lies at n/5 seconds of stream time; the end of the stream is a tick too. Before a tick
/// come the timed texts up to it, each as metadata "TXXX". An unfinished playlist is fetched again
/// every target duration of stream time. While a playlist is fetched, and while the next segment is
/// not known, the clock stands still; texts of the moment at which a segment ends can be in the
/// next one, so a tick at the end of what is known waits as well.
///
/// Ownership: make it with `std::make_shared`; whoever shows a stream holds it. It may be let go
/// of, or given another stream, inside any of its reports. Threads: main run loop.
class ClockDisplay final : public XELVideoDisplay,
                           public StreamPlayer,
                           public std::enable_shared_from_this<ClockDisplay> {
 public:
  /// @param now seconds of a steady clock.
  /// @param speed seconds of stream time for each second, positive; absent: as fast as possible.
  ClockDisplay(std::shared_ptr<HTTPClient> http, std::shared_ptr<RunLoop> runLoop,
               std::function<double()> now, std::optional<double> speed);
  ~ClockDisplay() override;

  void loadURL_withSubtitles(const std::string& url,
                             const std::vector<JSONValue>& subtitles) override;
  std::shared_ptr<XELVideoDisplayDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) override {
    delegate_ = std::move(delegate);
  }

  std::shared_ptr<XELVideoDisplay> display() override { return shared_from_this(); }
  void setObserver(std::weak_ptr<StreamPlayerObserver> observer) override {
    observer_ = std::move(observer);
  }
  /// The position is that of the last tick or jump, or of a timed text reported since.
  PlayProgress progress() const override;
  void play() override;
  void pause() override;
  void seek(double to) override;

 private:
  void fetchPlaylist();
  void handlePlaylistResult(const HTTPResult& result);
  void takePlaylist(const MediaPlaylist& playlist);
  void fail(const std::shared_ptr<const Error>& error);
  void end();

  std::optional<double> nextTick() const;
  bool isDue(double tick) const;
  void stop();
  void goOn();
  void run();
  void advance();
  void pass(double tick);
  bool reportTextsThrough(double tick);
  void everyInterval(double seconds, void (ClockDisplay::*action)());

  const std::shared_ptr<HTTPClient> http_;
  const std::shared_ptr<RunLoop> runLoop_;
  const std::function<double()> now_;
  const std::optional<double> speed_;
  std::weak_ptr<XELVideoDisplayDelegate> delegate_;
  std::weak_ptr<StreamPlayerObserver> observer_;

  /// Counts what the clock was told, such as to load: what was begun before is dropped.
  std::uint64_t order_ = 0;
  std::string playlistURL_;
  bool isVariant_ = false;
  bool isReady_ = false;
  bool isPaused_ = false;
  StreamTimeline timeline_;
  double refreshDue_ = 0;

  double position_ = 0;
  /// The next tick, unless the end comes first.
  double clock_ = 0;
  bool isEndReported_ = false;
  /// Texts before this moment have been reported, or skipped.
  double textsFrom_ = 0;

  RunLoop::TimerID timer_ = 0;
  /// At this moment of the steady clock the stream stood at `anchorPosition_`.
  double anchorTime_ = 0;
  double anchorPosition_ = 0;
};

}  // namespace xel
