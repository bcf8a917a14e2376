#include <memory>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "xel/simulation/VirtualRunLoop.h"

namespace xel::simulation {
namespace {

struct VirtualRunLoopTest : testing::Test {
  std::function<void()> note(const std::string& what) {
    return [this, what] { notes << what << '@' << loop.now() << ' '; };
  }
  VirtualRunLoop loop;
  std::ostringstream notes;
};

TEST_F(VirtualRunLoopTest, RunsWhatIsDueInOrderOfTime) {
  loop.after(3, note("late"));
  loop.every(2, note("tick"));
  loop.after(2, [this] {
    loop.post(note("posted"));
    loop.after(0.5, note("nested"));
  });
  loop.post(note("first"));
  loop.advance(4);
  EXPECT_EQ(notes.str(), "first@0 tick@2 posted@2 nested@2.5 late@3 tick@4 ");
  EXPECT_EQ(loop.now(), 4);
}

TEST_F(VirtualRunLoopTest, TimersDoNotDriftOverManySmallSteps) {
  int firings = 0;
  loop.every(0.1, [&] { ++firings; });
  for (int step = 0; step < 36'000; ++step) loop.advance(0.1);
  EXPECT_EQ(firings, 36'000);
}

TEST_F(VirtualRunLoopTest, ATimerMayCancelItselfWhileItRuns) {
  auto owned = std::make_shared<int>(1);
  RunLoop::TimerID timer = 0;
  timer = loop.every(1, [this, &timer, owned] {
    loop.cancel(timer);
    EXPECT_EQ(*owned, 1);
  });
  EXPECT_EQ(loop.timerCount(), 1u);
  loop.advance(5);
  EXPECT_EQ(loop.timerCount(), 0u);
  EXPECT_EQ(owned.use_count(), 1);
}

}  // namespace
}  // namespace xel::simulation
