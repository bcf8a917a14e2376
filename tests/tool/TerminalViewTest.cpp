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
  const auto info =
      XELAdBreakInfo::initWithKey_totalAds_duration_adBreakIndex_timeOffset("b", 2, 20, -1, 0);
  const auto ad = XELAd::initPrivate();
  ad->setAdTitle(std::string(100, 'x'));
  ad->setAdPosition(1);
  ad->setAdBreakInfo(info);

  view->show(0, ReadyForPlayback{});
  view->show(10, BreakEvent{"adBreakDidStart", info});
  view->writeAbove([file] { std::fputs("log line\n", file); });
  view->show(10, AdEvent{"adDidStart", ad});
  view->show(12, AdCountdown{ad, 8});
  view->showProgress({12, 40, false});
  view->redraw();
  EXPECT_TRUE(screen(written).ends_with(
      "\n0:12.0 ================####ooooooooooooooooooooooooooooooo---------------- live\n"
      "ad 1/2  " +
      std::string(58, 'x') + "  0:08.0 left"));
  view->show(15, BreakEvent{"adBreakDidEnd", info});
  view->show(15, CuepointsUpdated{{XELCuepoint::initWithStartTime_endTime(20, 40)}});
  EXPECT_TRUE(
      screen(written).starts_with("0:00.0    ready\n"
                                  "0:10.0    ad break started    2 ads, 20.0 s\n"
                                  "log line\n"));
  EXPECT_TRUE(screen(written).ends_with(
      "\n0:15.0    cue points          0:20.0 to 0:40.0\n"
      "0:12.0 ====================-------------oooooooooooooooooooooooooooooooooo live\ncontent"));
  view = nullptr;
  std::fclose(file);
  std::free(written);
}

}  // namespace
}  // namespace xel
