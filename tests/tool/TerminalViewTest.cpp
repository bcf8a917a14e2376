#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "TerminalView.h"

namespace xel {
namespace {

/// What a terminal shows in the end: a status of two lines goes when it is erased.
std::string screen(std::string written) {
  const std::string erase = "\r\033[1A\033[J";
  for (auto at = written.find(erase); at != std::string::npos; at = written.find(erase)) {
    const auto status = written.rfind('\n', written.rfind('\n', at) - 1) + 1;
    written.erase(status, at + erase.size() - status);
  }
  return written;
}

TEST(TerminalView, KeepsTheStatusBelowEventsAndLogLines) {
  setenv("NO_COLOR", "1", 1);
  setenv("LC_ALL", "C", 1);
  char* written = nullptr;
  std::size_t size = 0;
  std::FILE* const file = open_memstream(&written, &size);
  auto view = std::make_shared<TerminalView>(file);
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
  EXPECT_TRUE(screen(written).ends_with(
      "\n0:12.0 ================####ooooooooooooooooooooooooooooooo---------------- live\n"
      "ad 1/2  " +
      std::string(58, 'x') + "  0:08.0 left"));
  view->show(15, BreakEvent{"adBreakDidEnd", ad->adBreakInfo()});
  EXPECT_TRUE(screen(written).ends_with("\ncontent"));
  view = nullptr;
  std::fclose(file);
  std::free(written);
}

}  // namespace
}  // namespace xel
