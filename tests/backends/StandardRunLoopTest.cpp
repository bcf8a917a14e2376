#include <algorithm>
#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "xel/platform/StandardRunLoop.h"

#include "support/RunLoopTest.h"

namespace xel {
namespace {

struct StandardRunner {
  std::shared_ptr<StandardRunLoop> loop = std::make_shared<StandardRunLoop>();
  void run() { loop->run(); }
  void stop() { loop->stop(); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Standard, RunLoopTest, StandardRunner);

TEST(StandardRunLoop, KeepsAStopThatComesBeforeItRuns) {
  StandardRunLoop loop;
  bool hasRun = false;
  loop.post([&] { hasRun = true; });
  loop.stop();
  loop.run();
  EXPECT_FALSE(hasRun);
}

TEST(StandardRunLoop, TakesFunctionsFromManyThreadsInEachOnesOrderOnTheMainOne) {
  StandardRunLoop loop;
  std::vector<std::vector<int>> seen(4);
  std::vector<std::thread> threads;
  std::size_t ended = 0;
  for (auto& mine : seen) {
    threads.emplace_back([&] {
      for (int i = 0; i < 1000; ++i) loop.post([&mine, i] { mine.push_back(i); });
      loop.post([&] { ++ended == seen.size() ? loop.stop() : void(); });
    });
  }
  EXPECT_TRUE(loop.isMain());
  std::thread([&] {
    loop.run();
    EXPECT_TRUE(loop.isMain());
  }).join();
  EXPECT_FALSE(loop.isMain()) << "the thread that ran it last is the main one";
  for (auto& thread : threads) thread.join();
  for (const auto& mine : seen) {
    EXPECT_EQ(mine.size(), 1000u);
    EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
  }
}

}  // namespace
}  // namespace xel
