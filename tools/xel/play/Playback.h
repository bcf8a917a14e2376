#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "xel/simulation/ObservingDisplay.h"

#include "play/StreamPlayer.h"

namespace xel {

/// A jump, in seconds of stream time: the first tick at or after `at` is replaced by a jump to
/// `to`.
struct Seek {
  double at = 0;
  double to = 0;
};

/// What is to be played of the streams that are loaded.
struct PlaybackSettings {
  /// Taken in order, each once, over all streams that are loaded.
  std::vector<Seek> seeks = {};
  /// Stream time to play, in seconds summed over all streams; jumps do not count. Absent: to the
  /// end.
  std::optional<double> duration = std::nullopt;
};

/// Told of what happens under a playback, beside the library. Threads: main run loop.
class PlaybackObserver {
 public:
  virtual ~PlaybackObserver() = default;
  virtual void playbackWillLoad(const std::string& url,
                                const std::vector<JSONValue>& subtitles) = 0;
  virtual void playbackWillSeek(double to) = 0;
  /// After the library heard of the same progress.
  virtual void playbackDidTick() = 0;
  virtual void playbackDidMiss(std::uint64_t segments) = 0;
  /// The stream is at its end, or the duration to play ran out; nothing more is reported.
  virtual void playbackDidEnd() = 0;
};

/// A player under play: does the jumps that were asked for, and ends after the duration to play.
///
/// The tick and the texts that a jump replaces, and those beyond the duration, do not reach the
/// library. Ownership: shared. Threads: main run loop.
class Playback final : private simulation::DisplayObserver, private StreamPlayerObserver {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null. The observer is not kept alive.
  static std::shared_ptr<Playback> make(std::shared_ptr<StreamPlayer> player,
                                        PlaybackSettings settings,
                                        std::weak_ptr<PlaybackObserver> observer);
  Playback(Token, std::shared_ptr<StreamPlayer> player, PlaybackSettings settings,
           std::weak_ptr<PlaybackObserver> observer);

  /// The display for the library; never null.
  std::shared_ptr<XELVideoDisplay> display() const { return display_; }
  PlayProgress progress() const { return player_->progress(); }
  void togglePause();
  /// @param seconds from where the playhead is, forward or, where negative, back.
  void seekBy(double seconds);

 private:
  void displayWillLoad(const std::string& url, const std::vector<JSONValue>& subtitles) override;
  bool displayWillReport(const simulation::DisplayReport& report) override;
  void displayDidReport(const simulation::DisplayReport& report) override;
  void playerDidMiss(std::uint64_t segments) override;
  void playerDidEnd() override;

  bool isSeekDue(double time) const;
  double playedAt(double time) const;
  bool isBeyondDuration(double played) const;
  bool willTick(double time);
  void seek(double to);
  void leave();
  void end();

  const std::shared_ptr<StreamPlayer> player_;
  const PlaybackSettings settings_;
  const std::weak_ptr<PlaybackObserver> observer_;
  std::shared_ptr<simulation::ObservingDisplay> display_;

  std::size_t nextSeek_ = 0;
  /// From a jump until the first tick after it, which no other jump replaces.
  bool isArriving_ = false;
  /// The last tick, if the next one goes on from there; until then so much has been played.
  std::optional<double> lastTick_;
  double played_ = 0;
  bool isOver_ = false;
};

}  // namespace xel
