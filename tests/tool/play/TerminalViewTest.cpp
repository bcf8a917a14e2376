#include <cstdio>
#include <cstdlib>
#include <memory>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "play/TerminalView.h"

namespace xel {
namespace {

/// What a terminal shows in the end: the status goes when it is erased from its beginning on.
std::string screen(const std::string& written) {
  const std::regex erasedStatus("\033\\[\\?7l[^\033]*\033\\[\\?7h\r\033\\[1A\r\033\\[J");
  const std::regex control("\r?\033\\[[?0-9]*[A-Za-z]");
  return std::regex_replace(std::regex_replace(written, erasedStatus, ""), control, "");
}

bool endsWith(const std::string& text, const std::string& end) { return text.ends_with(end); }

TEST(TerminalView, KeepsTheStatusBelowEventsAndLogLines) {
  setenv("NO_COLOR", "1", 1);
  setenv("LC_ALL", "C", 1);
  char* written = nullptr;
  std::size_t size = 0;
  std::FILE* const file = open_memstream(&written, &size);
  auto view =
      std::make_shared<TerminalView>(file, [](std::string_view text) { return std::string(text); });
  const auto ad = XELAd::initPrivate();
  ad->setAdTitle(std::string(100, 'x'));
  ad->setAdPosition(1);
  ad->setAdBreakInfo(
      XELAdBreakInfo::initWithKey_totalAds_duration_adBreakIndex_timeOffset("b", 2, 20, -1, 0));
  view->show(0, ReadyForPlayback{});
  view->show(10, BreakEvent{"adBreakDidStart", ad->adBreakInfo()});
  view->writeAbove([file] { std::fputs("log line\n", file); });
  view->show(10, AdEvent{"adDidStart", ad});
  view->show(12, AdCountdown{ad, 8});
  view->showProgress({12, 40, false});
  view->redraw();
  EXPECT_NE(screen(written).find("2 ads, 20.0 s\nlog line\n0:10.0 "), std::string::npos);
  EXPECT_PRED2(
      endsWith, screen(written),
      ("\n0:12.0 =================###ooooooooooooooooooooooooooooooo----------------- live\n"
       "ad 1/2  " +
       std::string(59, 'x') + "  0:08.0 left"));
  view->show(15, BreakEvent{"adBreakDidEnd", ad->adBreakInfo()});
  view->showProgress({15, 60, true, true, 7.5});
  view->redraw();
  EXPECT_PRED2(
      endsWith, screen(written),
      ("\n0:15.0 | content 0:07.5 ========####o------------------------------------ 1:00.0\n"
       "content | paused"));
  view = nullptr;
  std::fclose(file);
  std::free(written);
}

}  // namespace
}  // namespace xel
