#pragma once

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "play/OutputFilter.h"
#include "play/PlayView.h"
#include "play/ProgressBar.h"

namespace xel {

/// The events as they come, and below them, always on the last lines of the terminal, a bar of the
/// stream with its ad breaks and the ad that is playing.
///
/// The view changes no mode of the terminal, and leaves the cursor below the last line at the end.
/// Colours unless the environment
/// has NO_COLOR, line characters if its locale is UTF-8.
class TerminalView final : public PlayView, public std::enable_shared_from_this<TerminalView> {
 public:
  /// @param out a terminal; stays open for as long as the view lives.
  TerminalView(std::FILE* out, OutputFilter filter);
  ~TerminalView() override;

  void show(double time, const PlayEvent& event) override;
  void showProgress(const PlayProgress& progress) override;
  /// Lines on standard error, above the bar when that is a terminal too.
  std::shared_ptr<Log> log() override;
  void redraw() override;
  void suspend() override;

  /// Takes the bar away, lets something else be written, and draws the bar again below it.
  void writeAbove(const std::function<void()>& write);

 private:
  void redraw(const std::string& above);
  void follow(double time, const PlayEvent& event);
  std::string styled(const char* style, const std::string& text) const;
  std::string separator() const;
  std::string barLine(std::size_t columns) const;
  std::string adLine(std::size_t columns) const;
  std::string status() const;
  void put(const std::string& text);

  std::FILE* const out_;
  const OutputFilter filter_;
  const bool hasColours_;
  const bool hasLineCharacters_;
  PlayProgress progress_;
  bool isReady_ = false;
  std::vector<TimeSpan> cuepoints_;
  /// The breaks of a stream without cue points, as they come.
  std::vector<TimeSpan> seenBreaks_;
  std::shared_ptr<XELAd> ad_;
  double adRemaining_ = 0;
  std::chrono::steady_clock::time_point drawnAt_;
};

}  // namespace xel
