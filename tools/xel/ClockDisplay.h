#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/display/XELVideoDisplay.h"
#include "xel/platform/HTTPClient.h"
#include "xel/platform/RunLoop.h"

#include "StreamTimeline.h"

namespace xel {

/// The domain of the errors that a clock display makes itself; transfer errors are passed on as
/// they are.
inline constexpr std::string_view clockPlayerErrorDomain = "XELClockPlayerError";

/// The codes of errors in `clockPlayerErrorDomain`.
enum class ClockPlayerError : int {
  refused = 1,       ///< The manifest was answered with an HTTP status of 400 or more.
  notAPlaylist = 2,  ///< What was answered is no media playlist.
};

/// A jump of the clock, in seconds of stream time: the first tick at or after `at` is replaced by
/// one at exactly `to`.
struct Seek {
  double at = 0;
  double to = 0;
};

/// Told of what a clock display does, beside its delegate. Threads: main run loop.
class ClockDisplayObserver {
 public:
  virtual ~ClockDisplayObserver() = default;
  /// Before the manifest is fetched.
  virtual void clockWillLoad(const std::string& url, const std::vector<JSONValue>& subtitles) = 0;
  /// After the delegate heard of the same progress.
  virtual void clockDidTick() = 0;
  /// Live segments went out of the playlist before they were seen.
  virtual void clockDidMiss(std::uint64_t segments) = 0;
  /// The stream is at its end, or the duration to play ran out; nothing more is reported.
  virtual void clockDidEnd() = 0;
};

/// A video display without pictures: it fetches the manifest and lets a clock run over it.
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
                           public std::enable_shared_from_this<ClockDisplay> {
 public:
  struct Settings {
    /// Seconds of stream time for each second, positive; absent: as fast as possible.
    std::optional<double> speed = 1;
    /// Taken in order, each once, over all streams that are loaded.
    std::vector<Seek> seeks;
    /// Stream time to play, in seconds summed over all streams; jumps do not count. Absent: to the
    /// end.
    std::optional<double> duration;
  };

  /// @param now seconds of a steady clock.
  ClockDisplay(std::shared_ptr<HTTPClient> http, std::shared_ptr<RunLoop> runLoop,
               std::function<double()> now, Settings settings);
  ~ClockDisplay() override;

  void loadURL_withSubtitles(const std::string& url,
                             const std::vector<JSONValue>& subtitles) override;
  std::shared_ptr<XELVideoDisplayDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) override {
    delegate_ = std::move(delegate);
  }
  void setObserver(std::weak_ptr<ClockDisplayObserver> observer) {
    observer_ = std::move(observer);
  }

  /// Stream time, in seconds: that of the last tick, or of a timed text reported since. 0 until the
  /// first tick of a stream.
  double position() const noexcept { return position_; }
  /// The end of the current stream as far as it is known, in seconds.
  double knownEnd() const noexcept { return timeline_.end(); }
  /// Whether `knownEnd` is final.
  bool isEndFinal() const noexcept { return timeline_.isFinished(); }

 private:
  void fetchPlaylist();
  void handlePlaylistResult(const HTTPResult& result);
  void takePlaylist(const MediaPlaylist& playlist);
  void fail(const std::shared_ptr<const Error>& error);
  void end();

  std::optional<double> nextTick() const;
  bool isDue(double tick) const;
  double played(double time) const { return playedBefore_ + (time - runStart_); }
  void standStill();
  void run();
  void advance();
  void pass(double tick);
  void jump(double from, double to);
  bool reportTexts(double from, double through);
  void everyInterval(double seconds, void (ClockDisplay::*action)());

  const std::shared_ptr<HTTPClient> http_;
  const std::shared_ptr<RunLoop> runLoop_;
  const std::function<double()> now_;
  const Settings settings_;
  std::weak_ptr<XELVideoDisplayDelegate> delegate_;
  std::weak_ptr<ClockDisplayObserver> observer_;
  std::size_t nextSeek_ = 0;

  /// Counts the loads: what was begun for an earlier one is dropped.
  std::uint64_t load_ = 0;
  std::string playlistURL_;
  bool isVariant_ = false;
  bool isReady_ = false;
  StreamTimeline timeline_;
  double refreshDue_ = 0;

  double position_ = 0;
  /// The next tick, unless the end comes first.
  double clock_ = 0;
  bool isAtSeekTarget_ = false;
  bool isEndReported_ = false;
  /// Texts before this moment have been reported, or skipped.
  double textsFrom_ = 0;
  double playedBefore_ = 0;
  double runStart_ = 0;

  bool isRunning_ = false;
  RunLoop::TimerID timer_ = 0;
  /// At this moment of the steady clock the stream stood at `anchorPosition_`.
  double anchorTime_ = 0;
  double anchorPosition_ = 0;
};

}  // namespace xel
