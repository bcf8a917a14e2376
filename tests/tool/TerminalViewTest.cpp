#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "TerminalView.h"

namespace xel {
namespace {

/// What a terminal of 80 columns would show, lines below each other; understands what the view
/// writes and nothing more.
std::string screenOf(const std::string& written) {
  std::vector<std::string> rows(1);
  std::size_t row = 0;
  std::size_t column = 0;
  for (std::size_t i = 0; i < written.size(); ++i) {
    if (written.compare(i, 2, "\033[") == 0) {
      const auto command = written.find_first_not_of("0123456789", i + 2);
      const auto count = std::atoi(written.c_str() + i + 2);
      if (written[command] == 'A') row -= static_cast<std::size_t>(count);
      if (written[command] == 'J') {
        rows.resize(row + 1);
        rows[row].resize(column);
      }
      i = command;
    } else if (written[i] == '\r') {
      column = 0;
    } else if (written[i] == '\n') {
      column = 0;
      if (++row == rows.size()) rows.emplace_back();
    } else {
      rows[row].resize(column++);
      rows[row] += written[i];
    }
  }
  std::string screen;
  for (const auto& line : rows) screen += line + "\n";
  return screen;
}

class TerminalViewTest : public testing::Test {
 protected:
  TerminalViewTest() {
    setenv("NO_COLOR", "1", 1);
    setenv("LC_ALL", "C", 1);
    view_ = std::make_shared<TerminalView>(file_);
  }
  ~TerminalViewTest() override {
    view_ = nullptr;
    std::fclose(file_);
    unsetenv("NO_COLOR");
    unsetenv("LC_ALL");
  }
  std::string screen() {
    std::string written(static_cast<std::size_t>(std::ftell(file_)), '\0');
    std::rewind(file_);
    const auto size = std::fread(written.data(), 1, written.size(), file_);
    EXPECT_EQ(size, written.size());
    return screenOf(written);
  }

  std::FILE* const file_ = std::tmpfile();
  std::shared_ptr<TerminalView> view_;
};

TEST_F(TerminalViewTest, KeepsTheStatusBelowEventsAndLogLines) {
  view_->show(0, CuepointsUpdated{{XELCuepoint::initWithStartTime_endTime(20, 40)}});
  view_->show(0, ReadyForPlayback{});
  view_->showProgress({50, 100, true});
  view_->redraw();
  view_->writeAbove([this] { std::fputs("log line\n", file_); });
  view_->show(50, PingSent{"start", "https://t"});
  EXPECT_EQ(screen(),
            "0:00.0    cue points          0:20.0 to 0:40.0\n"
            "0:00.0    ready\n"
            "log line\n"
            "0:50.0    ping start          https://t\n"
            "0:50.0 =============#############======--------------------------------- 1:40.0\n"
            "content\n");
}

TEST_F(TerminalViewTest, TellsOfTheAdUntilItsBreakEndsAndOfLiveBreaksAsTheyCome) {
  const auto info =
      XELAdBreakInfo::initWithKey_totalAds_duration_adBreakIndex_timeOffset("b", 2, 20, -1, 0);
  const auto ad = XELAd::initPrivate();
  ad->setAdTitle(std::string(100, 'x') + "\033[2J");
  ad->setAdPosition(1);
  ad->setAdBreakInfo(info);
  view_->show(0, ReadyForPlayback{});
  view_->show(10, BreakEvent{"adBreakDidStart", info});
  view_->show(10, AdEvent{"adDidStart", ad});
  view_->show(12, AdCountdown{ad, 8});
  view_->showProgress({12, 40, false});
  view_->redraw();
  const auto during = screen();
  EXPECT_NE(during.find("\n0:12.0 ================####o"), std::string::npos) << during;
  EXPECT_NE(during.find(" live\nad 1/2  " + std::string(58, 'x') + "  0:08.0 left\n"),
            std::string::npos)
      << during;

  view_->show(15, BreakEvent{"adBreakDidEnd", info});
  EXPECT_TRUE(screen().ends_with("\ncontent\n"));
}

}  // namespace
}  // namespace xel
