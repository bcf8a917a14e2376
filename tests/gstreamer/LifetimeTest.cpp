#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include "MediaServer.h"
#include "PlayedStream.h"
#include "serve/StreamPlan.h"

namespace xel {
namespace {

/// The names of the threads that this process has for its streams.
std::vector<std::string> streamThreads() {
  // GLib's own, which it keeps; and those that have the process's name: the main one, the server's.
  std::vector<std::string> others = {"gmain", "gdbus", "dconf", "pool-"};
  std::vector<std::string> names;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string name;
    std::getline(std::ifstream(task.path() / "comm"), name);
    if (task.path().filename() == std::to_string(getpid())) others.push_back(name);
    names.push_back(name);
  }
  std::erase_if(names, [&others](const std::string& name) {
    return std::any_of(others.begin(), others.end(),
                       [&name](const auto& other) { return name.starts_with(other); });
  });
  return names;
}

struct GstLifetime : PlayerTest {
  MediaServer server;
  const std::string url = server.add("vod", serve::mediaPlan(serve::StreamKind::vod, 0));

  void runUntil(const std::function<bool()>& isDone) {
    const auto timer = loop()->every(0.01, [&] {
      if (isDone()) loop()->stop();
    });
    loop()->run();
    loop()->cancel(timer);
  }
  void runUntilThreadsAreGone() {
    int looks = 0;
    runUntil([&] { return streamThreads().empty() || ++looks > 3000; });
    EXPECT_EQ(streamThreads(), std::vector<std::string>());
  }
};

/// Kilobytes of memory that this process holds, what the heap keeps for later given back.
std::size_t memoryHeld() {
  malloc_trim(0);
  std::size_t all = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

TEST_F(GstLifetime, TwentyLoadsLeaveNeitherMemoryNorThreads) {
  // Many threads come and go: with a heap for each of them, gaps in all of these would count.
  mallopt(M_ARENA_MAX, 1);
  const auto stream = PlayedStream::play(url);
  std::size_t afterFifth = 0;
  for (int load = 1; load <= 20; ++load) {
    if (load > 1) stream->display->loadURL_withSubtitles(url, {});
    const auto item = stream->display->playerItem();
    runUntil([&] {
      return item->status() == MediaItemStatus::failed ||
             (stream->readies == load && stream->player->currentTime() > 0.5);
    });
    ASSERT_EQ(stream->readies, load);
    if (load != 5 && load != 20) continue;
    EXPECT_FALSE(streamThreads().empty()) << "a stream's threads cannot be told from others";
    stream->player->replaceCurrentItem(nullptr);
    runUntilThreadsAreGone();
    if (load == 5) afterFifth = memoryHeld();
  }
  const std::size_t afterLast = memoryHeld();
  std::printf("memory held: %zu KB after 5 loads, %zu KB after 20\n", afterFifth, afterLast);
#ifndef __SANITIZE_ADDRESS__
  EXPECT_LE(static_cast<double>(afterLast), 1.05 * static_cast<double>(afterFifth));
#endif
}

TEST_F(GstLifetime, AnythingMayBeLetGoOfAtAnyMoment) {
  for (const char* each : {"low", "high"}) {
    server.hang(std::string("/playlist/") + each + ".m3u8");
    server.hang(std::string("/segment/") + each + "-0.ts");
  }
  const auto plan = serve::mediaPlan(serve::StreamKind::vod, 0);
  const std::vector<std::string> urls = {url,
                                         url,
                                         server.hang("/silent.m3u8"),
                                         server.add("playlist", plan),
                                         server.add("segment", plan),
                                         server.url() + "/none.m3u8"};
  std::mt19937 random(20);
  const auto draw = [&random](int end) { return static_cast<int>(random() % end); };
  std::vector<std::shared_ptr<PlayedStream>> streams;
  for (int step = 0; step < 60; ++step) {
    if (streams.size() < 3) {
      streams.push_back(PlayedStream::play(urls[draw(6)]));
    }
    int turns = draw(40);
    runUntil([&] { return turns-- <= 0; });
    const auto stream = streams[draw(static_cast<int>(streams.size()))];
    switch (draw(6)) {
      case 0:
        stream->player->seek(draw(40));
        break;
      case 1:
        stream->display->loadURL_withSubtitles(urls[draw(6)], {});
        break;
      case 2:
        stream->display = nullptr;
        break;
      case 3:
        stream->player->replaceCurrentItem(nullptr);
        break;
      case 4:
        draw(2) == 0 ? stream->player->pause() : stream->player->play();
        break;
      default:
        break;
    }
    if (!stream->display || draw(3) == 0) std::erase(streams, stream);
  }
  streams.clear();
  runUntilThreadsAreGone();
}

TEST_F(GstLifetime, AnythingMayBeDoneInsideAReport) {
  const std::vector<std::function<void(PlayedStream&)>> actions = {
      [](PlayedStream& stream) { stream.display = nullptr; },
      [](PlayedStream& stream) { stream.player->replaceCurrentItem(nullptr); },
      [](PlayedStream& stream) { stream.player->seek(11); },
      [](PlayedStream& stream) { stream.player->pause(); },
      [this](PlayedStream& stream) { stream.display->loadURL_withSubtitles(url, {}); },
      [](PlayedStream& stream) {
        stream.display = nullptr;
        stream.player = nullptr;
      }};
  std::size_t done = 0;
  std::vector<std::shared_ptr<PlayedStream>> streams;
  for (const char* report : {"ready", "progress", "metadata"}) {
    for (const auto& action : actions) {
      streams.push_back(PlayedStream::play(url));
      PlayedStream& stream = *streams.back();
      stream.awaitedReport = report;
      stream.inReport = [&] {
        ++done;
        action(stream);
      };
    }
  }
  runUntil([&] { return done == streams.size(); });
  int turns = 100;
  runUntil([&] { return turns-- == 0; });
  for (const auto& stream : streams) EXPECT_EQ(stream->failures, std::vector<std::string>());
  streams.clear();
  runUntilThreadsAreGone();
}

}  // namespace
}  // namespace xel
