#include "play/TerminalView.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include <sys/ioctl.h>
#include <unistd.h>

#include "common/PrintableText.h"
#include "common/UTF8.h"
#include "play/EventText.h"

namespace xel {
namespace {

constexpr auto redrawInterval = std::chrono::milliseconds(33);
/// On a terminal with fewer, the bar needs the room.
constexpr std::size_t columnsForContentTime = 50;
constexpr std::size_t separatorColumns = 3;

// Between two drawings the cursor stands at the beginning of the status, which nothing but the
// terminal itself knows once it has become narrower and has broken lines. What is drawn meanwhile
// for the earlier width must not be broken, so that the way back is one line.
constexpr auto erased = "\r\033[J";
constexpr auto toStatus = "\r\033[1A";
constexpr auto wrapOff = "\033[?7l";
constexpr auto wrapOn = "\033[?7h";

constexpr auto bold = "\033[1m";
constexpr auto dim = "\033[2m";
constexpr auto red = "\033[31m";
constexpr auto green = "\033[32m";
constexpr auto yellow = "\033[33m";
constexpr auto brightYellow = "\033[93m";
constexpr auto plain = "\033[0m";

std::string environmentValue(const char* name) {
  const auto* value = std::getenv(name);
  return value ? value : "";
}

bool isUTF8Locale() {
  for (const auto* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const auto locale = environmentValue(name);
    if (!locale.empty()) {
      return locale.find("UTF-8") != std::string::npos || locale.find("utf8") != std::string::npos;
    }
  }
  return false;
}

std::size_t columnsOf(std::FILE* terminal) {
  winsize size = {};
  if (ioctl(fileno(terminal), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

/// The text's beginning, as far as it fits. Characters of the scripts that may be wide count as
/// wide, so that the result never takes more columns than there are.
std::string fitted(std::string_view text, std::size_t columns) {
  std::string result;
  std::size_t used = 0;
  while (!text.empty()) {
    const auto length = std::max<std::size_t>(leadingCharacterLength(text), 1);
    const std::size_t width = length > 2 ? 2 : 1;
    if (used + width > columns) break;
    result += text.substr(0, length);
    used += width;
    text.remove_prefix(length);
  }
  return result;
}

const char* styleOf(const PlayEvent& event) {
  if (std::holds_alternative<ErrorReceived>(event)) return red;
  if (std::holds_alternative<AdEvent>(event)) return yellow;
  if (std::holds_alternative<BreakEvent>(event)) return brightYellow;
  if (const auto* answer = std::get_if<PingAnswered>(&event)) {
    return answer->error || answer->status >= 400 ? red : dim;
  }
  if (std::holds_alternative<PingSent>(event)) return dim;
  return "";
}

struct CellLook {
  const char* style;
  const char* lineCharacter;
  const char* ascii;
};

CellLook lookOf(BarCell cell) {
  switch (cell) {
    case BarCell::played:
      return {green, "━", "="};
    case BarCell::breakAhead:
      return {yellow, "▒", "o"};
    case BarCell::breakPlayed:
      return {brightYellow, "█", "#"};
    case BarCell::ahead:
      break;
  }
  return {dim, "─", "-"};
}

class TerminalLog final : public Log {
 public:
  explicit TerminalLog(std::weak_ptr<TerminalView> view) : view_(std::move(view)) {}
  void line(std::string_view text) noexcept override {
    if (const auto view = view_.lock()) {
      view->writeAbove([&] { standardError_->line(text); });
    } else {
      standardError_->line(text);
    }
  }

 private:
  const std::weak_ptr<TerminalView> view_;
  const std::shared_ptr<Log> standardError_ = makeStandardErrorLog();
};

}  // namespace

TerminalView::TerminalView(std::FILE* out, OutputFilter filter)
    : out_(out),
      filter_(std::move(filter)),
      hasColours_(environmentValue("NO_COLOR").empty()),
      hasLineCharacters_(isUTF8Locale()) {}

TerminalView::~TerminalView() { suspend(); }

void TerminalView::show(double time, const PlayEvent& event) {
  follow(time, event);
  const auto line = toLine(time, event);
  if (line) redraw(styled(styleOf(event), filter_(*line)) + "\n");
}

void TerminalView::showProgress(const PlayProgress& progress) {
  progress_ = progress;
  if (std::chrono::steady_clock::now() - drawnAt_ >= redrawInterval) redraw();
}

std::shared_ptr<Log> TerminalView::log() {
  if (isatty(STDERR_FILENO) == 0) return makeStandardErrorLog();
  return std::make_shared<TerminalLog>(weak_from_this());
}

void TerminalView::redraw() { redraw(""); }

void TerminalView::suspend() { put(erased + status() + "\n"); }

void TerminalView::redraw(const std::string& above) {
  drawnAt_ = std::chrono::steady_clock::now();
  // In one piece, so that nothing flickers.
  put(erased + above + status() + toStatus);
}

void TerminalView::writeAbove(const std::function<void()>& write) {
  put(erased);
  write();
  redraw();
}

void TerminalView::follow(double time, const PlayEvent& event) {
  if (std::holds_alternative<StreamLoaded>(event)) {
    progress_ = {};
    seenBreaks_.clear();
  } else if (std::holds_alternative<ReadyForPlayback>(event)) {
    isReady_ = true;
  } else if (const auto* updated = std::get_if<CuepointsUpdated>(&event)) {
    cuepoints_.clear();
    for (const auto& cuepoint : updated->cuepoints) {
      cuepoints_.push_back({cuepoint->startTime(), cuepoint->endTime()});
    }
  } else if (const auto* adBreak = std::get_if<BreakEvent>(&event)) {
    if (adBreak->name == "adBreakDidStart") {
      seenBreaks_.push_back({time, time + adBreak->info->duration()});
    } else {
      if (!seenBreaks_.empty()) seenBreaks_.back().end = time;
      ad_ = nullptr;
    }
  } else if (const auto* started = std::get_if<AdEvent>(&event)) {
    if (started->name == "adDidStart") {
      ad_ = started->ad;
      adRemaining_ = ad_->duration();
    }
  } else if (const auto* countdown = std::get_if<AdCountdown>(&event)) {
    adRemaining_ = countdown->remaining;
  }
}

std::string TerminalView::styled(const char* style, const std::string& text) const {
  if (!hasColours_ || *style == '\0') return text;
  return style + text + plain;
}

std::string TerminalView::separator() const { return hasLineCharacters_ ? " · " : " | "; }

std::string TerminalView::barLine(std::size_t columns) const {
  auto before = clockText(progress_.position);
  auto beforeColumns = before.size();
  if (progress_.contentTime && columns >= columnsForContentTime) {
    const auto content = "content " + clockText(*progress_.contentTime);
    before += separator() + content;
    beforeColumns += separatorColumns + content.size();
  }
  const auto after = progress_.isEndFinal ? clockText(progress_.knownEnd) : "live";
  const auto taken = beforeColumns + after.size() + 2;
  if (columns <= taken) return "";
  const auto cells = barCells(progress_.position, progress_.knownEnd,
                              cuepoints_.empty() ? seenBreaks_ : cuepoints_, columns - taken);
  std::string bar;
  for (auto cell = cells.begin(); cell != cells.end();) {
    const auto runEnd = std::find_if(cell, cells.end(), [&](BarCell c) { return c != *cell; });
    const auto look = lookOf(*cell);
    std::string run;
    for (; cell != runEnd; ++cell) run += hasLineCharacters_ ? look.lineCharacter : look.ascii;
    bar += styled(look.style, run);
  }
  return before + " " + bar + " " + after;
}

std::string TerminalView::adLine(std::size_t columns) const {
  auto before = std::string(isReady_ ? "content" : "waiting for the stream");
  std::string title;
  std::string after;
  if (ad_) {
    before = "ad " + countText(ad_->adPosition()) + "/" +
             countText(ad_->adBreakInfo()->totalAds()) + "  ";
    title = filter_(printable(ad_->adTitle().value_or(ad_->adKey().value_or(""))));
    after = "  " + clockText(adRemaining_) + " left";
  }
  auto taken = before.size() + after.size();
  if (progress_.isPaused) {
    const std::string paused = "paused";
    after += separator() + paused;
    taken += separatorColumns + paused.size();
  }
  if (columns < taken) return "";
  return before + styled(bold, fitted(title, columns - taken)) + after;
}

std::string TerminalView::status() const {
  const auto columns = columnsOf(out_);
  return wrapOff + barLine(columns) + "\n" + adLine(columns) + wrapOn;
}

void TerminalView::put(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), out_);
  std::fflush(out_);
}

}  // namespace xel
