#include <memory>
#include <thread>

#include <glib.h>
#include <gtest/gtest.h>

#include "xel/gstreamer/GLibRunLoop.h"

#include "support/RunLoopTest.h"

namespace xel {
namespace {

struct GLibRunner {
  std::shared_ptr<RunLoop> loop = makeGLibRunLoop();
  bool isRunning = false;

  void run() {
    for (isRunning = true; isRunning;) g_main_context_iteration(nullptr, TRUE);
  }
  void stop() { isRunning = false; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(GLib, RunLoopTest, GLibRunner);

TEST(GLibRunLoop, IsWokenByOtherThreadsAndCallsOnItsOwn) {
  GLibRunner runner;
  bool wasMain = false;
  std::thread other([&] {
    EXPECT_FALSE(runner.loop->isMain());
    runner.loop->post([&] {
      wasMain = runner.loop->isMain();
      runner.stop();
    });
  });
  runner.run();
  other.join();
  EXPECT_TRUE(wasMain);
}

}  // namespace
}  // namespace xel
