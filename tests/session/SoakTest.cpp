#include <functional>
#include <map>
#include <utility>

#include <malloc.h>

#include "support/Session.h"

namespace xel::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

/// Bytes on the heap; sanitizers bring a heap of their own, which does not tell.
std::size_t heapBytes() {
  const auto heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

/// What the heap may waver by: freed pieces that it keeps at hand count as used.
constexpr std::size_t slack = std::size_t{64} << 10;

/// A server that keeps nothing of what it was asked.
class ForgetfulServer final : public HTTPClient {
 public:
  ForgetfulServer(std::shared_ptr<RunLoop> loop,
                  std::function<HTTPResult(const HTTPRequest&)> answer)
      : loop_(std::move(loop)), answer_(std::move(answer)) {}

  void send(HTTPRequest request, Completion completion) override {
    if (request.trackingEvent) ++pings;
    auto result = request.trackingEvent ? HTTPResult{{}, {204, {}, {}}} : answer_(request);
    loop_->post([completion = std::move(completion), result = std::move(result)]() mutable {
      completion(std::move(result));
    });
  }

  std::size_t pings = 0;

 private:
  const std::shared_ptr<RunLoop> loop_;
  const std::function<HTTPResult(const HTTPRequest&)> answer_;
};

struct CountingHost final : XELStreamManagerDelegate {
  void streamManager_didInitializeStream(XELStreamManager&, const std::string&) override {}
  void streamManager_didReceiveError(XELStreamManager&,
                                     const std::shared_ptr<const Error>&) override {
    ++counts["error"];
  }
  void streamManager_adDidStart(XELStreamManager&, const std::shared_ptr<XELAd>&) override {
    ++counts["adDidStart"];
  }
  void streamManager_adDidComplete(XELStreamManager&, const std::shared_ptr<XELAd>&) override {
    ++counts["adDidComplete"];
  }
  void streamManager_adBreakDidEnd(XELStreamManager&,
                                   const std::shared_ptr<XELAdBreakInfo>&) override {
    ++counts["adBreakDidEnd"];
  }
  std::map<std::string, std::size_t> counts;
};

struct Soak : testing::Test {
  void install(std::function<HTTPResult(const HTTPRequest&)> answer) {
    server = std::make_shared<ForgetfulServer>(loop, std::move(answer));
    installed = std::make_unique<ScopedPlatform>(
        Platform{server, loop, std::make_shared<FixedEnvironment>(), log, {}});
  }

  std::shared_ptr<VirtualRunLoop> loop = std::make_shared<VirtualRunLoop>();
  std::shared_ptr<RecordingLog> log = std::make_shared<RecordingLog>();
  std::shared_ptr<ForgetfulServer> server;
  std::shared_ptr<CountingHost> host = std::make_shared<CountingHost>();
  std::unique_ptr<ScopedPlatform> installed;
};

constexpr std::size_t adsPerBreak = 3;
constexpr std::size_t pingsPerAd = 7;  // An impression, and six events of the creative.

/// A break at each quarter of an hour; a document tells of those of an hour before and an hour
/// after.
struct SlidingStream {
  static constexpr double betweenBreaks = 900;

  static StreamInfoBuilder around(double time) {
    auto document = StreamInfoBuilder::live();
    const auto now = static_cast<int>(time / betweenBreaks);
    for (int i = std::max(0, now - 4); i <= now + 4; ++i) {
      const std::string key = "break-" + std::to_string(i);
      document.addBreak(key, i * betweenBreaks);
      for (const char* ad : {"-a", "-b", "-c"}) document.addAd(key + ad, 10);
    }
    return document;
  }

  /// Documents change by the quarter of an hour.
  const std::string& documentAt(double time) {
    if (const int now = static_cast<int>(time / betweenBreaks); now != since_) {
      since_ = now;
      document_ = around(time).build();
    }
    return document_;
  }

 private:
  int since_ = -1;
  std::string document_;
};

TEST_F(Soak, AWeekOfALiveStreamLeavesNothingButTheKeysOfItsAds) {
  constexpr int hours = isSanitized ? 8 : 7 * 24;
  constexpr std::size_t bytesOfAKey = 128;
  SlidingStream stream;
  std::size_t polls = 0;
  install([&](const HTTPRequest& request) -> HTTPResult {
    if (request.method == "POST") return {{}, {200, {}, StreamInitAnswerBuilder::live().build()}};
    if (++polls % 100 != 0) return {{}, {200, {}, stream.documentAt(loop->now())}};
    if (polls % 300 == 0) return {{}, {200, {}, "<html>"}};
    if (polls % 200 == 0) return {{}, {503, {}, ""}};
    return {makeTransferError(TransferError::timedOut, "no answer"), {}};
  });
  const auto display = std::make_shared<ScriptedDisplay>();
  const auto manager = XELStreamManager::initWithVideoDisplay(display);
  manager->setDelegate(host);
  manager->requestStream(XELLiveStreamRequest::initWithAssetKey("asset"));

  std::size_t ceiling = 0;
  for (int quarter = 0; quarter < hours * 4; ++quarter) {
    const auto events = SlidingStream::around(quarter * SlidingStream::betweenBreaks).events();
    auto event = events.begin();
    for (int tick = 0; tick < SlidingStream::betweenBreaks * 5; ++tick) {
      const double time = quarter * SlidingStream::betweenBreaks + tick / 5.0;
      loop->advance(0.2);
      for (; event != events.end() && event->time <= time; ++event) {
        display->reportTXXX(event->text);
      }
      display->reportProgress(time);
    }
    if (quarter < 4) ceiling = std::max(ceiling, heapBytes());
    if (!isSanitized) {
      ASSERT_LE(heapBytes(), ceiling + slack + host->counts["adDidStart"] * bytesOfAKey)
          << "after " << quarter << " quarters of an hour";
    }
  }

  constexpr std::size_t breaks = hours * 4;
  EXPECT_EQ(polls, hours * 360 + 1);
  EXPECT_EQ(host->counts,
            (std::map<std::string, std::size_t>{{"adDidStart", breaks * adsPerBreak},
                                                {"adDidComplete", breaks * adsPerBreak},
                                                {"adBreakDidEnd", breaks}}));
  EXPECT_EQ(server->pings, breaks * adsPerBreak * pingsPerAd);
  EXPECT_EQ(log->lines(), Lines());
}

TEST_F(Soak, TenThousandOnDemandSessionsInARowLeaveNothing) {
  constexpr int sessions = isSanitized ? 500 : 10'000;
  auto document = StreamInfoBuilder::vod();
  document.addBreak("first", 0).addAd("a", 5).addAd("b", 5).addAd("c", 5);
  document.addBreak("second", 30).addAd("d", 5).addAd("e", 5).addAd("f", 5);
  install([answer = StreamInitAnswerBuilder::vod().build(),
           info = document.build()](const HTTPRequest& request) -> HTTPResult {
    return {{}, {200, {}, request.method == "POST" ? answer : info}};
  });

  std::size_t ceiling = 0;
  for (int i = 0; i < sessions; ++i) {
    const auto display = std::make_shared<ScriptedDisplay>();
    const auto manager = XELStreamManager::initWithVideoDisplay(display);
    manager->setDelegate(host);
    manager->requestStream(Session::request(false));
    loop->runUntilIdle();
    display->reportReady();
    // A tenth is left within a break.
    display->play(0, i % 10 == 0 ? 35 : 50, 0.5);
    loop->runUntilIdle();
    if (i < sessions / 10) ceiling = std::max(ceiling, heapBytes());
    if (!isSanitized) ASSERT_LE(heapBytes(), ceiling + slack) << "after " << i << " sessions";
  }
  EXPECT_EQ(host->counts["adDidComplete"], sessions / 10 * (9 * 6 + 4));
  EXPECT_EQ(host->counts["error"], 0);
  EXPECT_EQ(log->lines(), Lines());
}

}  // namespace
}  // namespace xel::test
