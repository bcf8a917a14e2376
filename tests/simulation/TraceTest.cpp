#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

#include "support/Session.h"

namespace xel::test {
namespace {

constexpr const char* secrets[] = {"key-4711", "01234567-89ab-4cde-8f01-23456789abcd", "ppid value",
                                   "monitor&1", "user=42"};

/// A session full of faults, seeks and lettings-go, the same for the same seed.
class RandomSession final : public DisplayObserver,
                            public std::enable_shared_from_this<RandomSession> {
 public:
  RandomSession(std::uint32_t seed, bool isRecorded)
      : random_(seed), live_(below(2) == 0), isRecorded_(isRecorded) {
    if (isRecorded) {
      recorder_ = std::make_unique<TraceRecorder>(
          [this](std::string_view line) { trace += line; },
          TraceRecorder::Options{below(2) == 0, [this] { return platform_.loop().now(); }});
      installed_ = std::make_unique<ScopedPlatform>(recorder_->record(Platform::current()));
    } else {
      below(2);
    }
  }

  void run() {
    const auto observed = ObservingDisplay::make(display_, weak_from_this());
    manager_ = XELStreamManager::initWithVideoDisplay(
        isRecorded_ ? recorder_->record(std::static_pointer_cast<XELVideoDisplay>(observed))
                    : observed);
    const std::weak_ptr<XELStreamManagerDelegate> delegate = host;
    manager_->setDelegate(isRecorded_ ? recorder_->record(delegate) : delegate);
    host->onEvent = [this](const auto&) { misbehave(); };
    serve();
    const auto request = makeRequest();
    if (isRecorded_) recorder_->begin(request);
    manager_->requestStream(request);
    for (int i = 0; i < 200; ++i) act();
    if (isRecorded_) recorder_->noteEnd(0);
  }

  std::string trace;
  const std::shared_ptr<RecordingDelegate> host = std::make_shared<RecordingDelegate>();
  std::size_t pings() const { return platform_.server().pings().size(); }

 private:
  std::size_t below(std::size_t bound) { return random_() % bound; }

  std::shared_ptr<XELStreamRequest> makeRequest() const {
    auto request = Session::request(live_);
    request->setApiKey(secrets[0]);
    request->setStreamActivityMonitorID(secrets[3]);
    request->setAdTagParameters({{"ppid", secrets[2]},
                                 {"cust_params", "user=42&section=news"},
                                 {"description_url", "https://site.example/?page=1&x=%2F"}});
    request->setManifestURLSuffix("?token=a%2Fb&session=key-4711");
    return request;
  }

  void serve() {
    auto info = live_ ? StreamInfoBuilder::live() : StreamInfoBuilder::vod();
    const auto vast =
        VastBuilder()
            .ad("id")
            .impression("https://t.example/i?user=42&m=[SDKV]x&c=key%2D4711")
            .creative()
            .creativeTracking("start", "https://adserving.example/pcs/view?xai=A%3D&sig=b")
            .creativeTracking("midpoint", "not a URL, a=b");
    info.addBreak("x", 1).addAd("a", 4, vast.build()).addAd("b", 4).addBreak("y", 20).addAd("c", 4);
    events_ = info.events();
    auto answer = Session::goodAnswer(live_);
    answer.manifest =
        "https://media.example/main.m3u8?rdid=01234567-89ab-4cde-8f01-23456789abcd&q=%2F";
    if (live_ && below(2) == 0) answer.prerollManifest = "https://media.example/preroll.m3u8";
    auto& server = platform_.server();
    server.answer(live_ ? platform_.liveInitURL("asset") : platform_.vodInitURL("source", "video"),
                  {below(10) == 0 ? 500 : 200, answer.build(), 0.5});
    const auto document = live_ ? *answer.id3EventsURL : *answer.timeEventsURL;
    if (below(5) == 0) server.fail(document, TransferError::timedOut, 1);
    server.answer(document, {200, info.build(), 0.25});
    server.answer(document, {200, "{\"ads\":\"\xFF\"}"});
    server.answer(document, {503, "ppid%20value \\u0070pid value"});
    server.fail(document, TransferError::connectionLost, 0.5);
    server.answer(document, {200, info.build(), 7});
  }

  void act() {
    const auto& event = events_[below(events_.size())];
    switch (below(12)) {
      case 0:
        return display_->reportReady();
      case 1:
        return platform_.loop().advance(static_cast<double>(below(80)) / 8);
      case 2:
        if (below(20) == 0) display_->reportFailure(std::make_shared<Error>(Error{"d", 1, "", {}}));
        return;
      case 3:
      case 4:
        return display_->reportTXXX(event.text);
      case 5:
        return display_->reportProgress(event.time);
      default:
        platform_.loop().advance(0.2);
        return display_->reportProgress(time_ += 0.2);
    }
  }

  /// What a host may do inside any call.
  void misbehave() {
    if (below(12) == 0) display_->reportProgress(time_ = events_[below(events_.size())].time);
    if (below(100) == 0 && manager_) {
      if (isRecorded_) recorder_->noteRelease();
      manager_ = nullptr;
    }
  }

  void displayWillLoad(const std::string&, const std::vector<JSONValue>&) override {}
  void displayDidLoad() override { display_->reportReady(); }
  bool displayWillReport(const DisplayReport&) override { return true; }
  void displayDidReport(const DisplayReport&) override {}

  std::mt19937 random_;
  const bool live_;
  const bool isRecorded_;
  SimulatedPlatform platform_;
  std::unique_ptr<TraceRecorder> recorder_;
  std::unique_ptr<ScopedPlatform> installed_;
  std::vector<StreamInfoBuilder::Event> events_;
  const std::shared_ptr<ScriptedDisplay> display_ = std::make_shared<ScriptedDisplay>();
  std::shared_ptr<XELStreamManager> manager_;
  double time_ = 0;
};

Lines linesOf(const std::string& text) {
  Lines lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line + '\n');
  return lines;
}

TraceReplayResult replay(const std::string& trace) {
  std::istringstream in(trace);
  return replayTrace(in, 3);
}

std::string without(Lines lines, std::size_t line) {
  lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(line));
  std::string text;
  for (const auto& each : lines) text += each;
  return text;
}

std::string firstDifference(const TraceReplayResult& result) {
  if (result.fault) return result.fault->text("trace");
  return result.differences.empty() ? "" : result.differences[0].text();
}

TEST(Trace, ReplaysAsItWasRecordedAndTellsALineThatIsMissing) {
  std::size_t calls = 0;
  std::size_t removed = 0;
  for (std::uint32_t seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    const auto session = std::make_shared<RandomSession>(seed, true);
    session->run();
    const auto plain = std::make_shared<RandomSession>(seed, false);
    plain->run();
    ASSERT_EQ(session->host->lines(), plain->host->lines()) << "recording changed something";
    ASSERT_EQ(session->pings(), plain->pings());
    for (const auto* secret : secrets) ASSERT_EQ(session->trace.find(secret), std::string::npos);

    const auto result = replay(session->trace);
    ASSERT_EQ(firstDifference(result), "");
    ASSERT_EQ(result.delegateCalls, session->host->events().size());
    ASSERT_EQ(result.pings, session->pings());
    calls += result.delegateCalls;

    const auto lines = linesOf(session->trace);
    const auto line = seed % lines.size();
    const auto is = [&](std::size_t at, const char* what) {
      return lines[at].find(what) != std::string::npos;
    };
    if (!is(line, "\"kind\":\"delegate\"") || is(line + 1, "\"inside\"")) continue;
    ++removed;
    const auto different = replay(without(lines, line));
    ASSERT_EQ(different.differenceCount, 1u) << firstDifference(different);
    ASSERT_EQ(different.differences[0].expected, "nothing");
  }
  EXPECT_GT(calls, 2000u);
  EXPECT_GT(removed, 10u);
}

TEST(Trace, OfTheDemosSessionsReplaysAndTellsEachCallThatIsMissing) {
  for (const char* name : {"vod", "live"}) {
    SCOPED_TRACE(name);
    std::ifstream file(XEL_TEST_GOLDEN + std::string("/") + name + ".jsonl", std::ios::binary);
    const std::string trace(std::istreambuf_iterator<char>(file), {});
    const auto lines = linesOf(trace);
    EXPECT_EQ(firstDifference(replay(trace)), "");
    for (std::size_t line = 0; line < lines.size(); ++line) {
      if (lines[line].find("\"call\":\"ad") == std::string::npos) continue;
      const auto result = replay(without(lines, line));
      EXPECT_EQ(result.differenceCount, 1u) << line;
      const auto start = "line " + std::to_string(line + 1) + ": expected nothing, got ad";
      EXPECT_EQ(firstDifference(result).substr(0, start.size()), start);
    }
  }
}

TEST(Trace, IsReadAsFarAsItIsOne) {
  const std::string first = "{\"trace\":\"xel\",\"version\":1}\n";
  const std::string ready = "{\"t\":1,\"kind\":\"ready\"}\n";
  struct {
    std::string text, fault;
    std::size_t cutOffLine;
  } const cases[] = {
      {first + ready + "{\"t\":2,\"kind\":\"unheard of\"}\r\n\n" + ready, "", 0},
      {first + ready + ready.substr(0, 9), "", 3},
      {first + ready + "\xC3", "", 3},
      {first + ready.substr(0, ready.size() - 1), "", 0},
      {"", "f is empty", 0},
      {first.substr(0, 9), "f, line 1, does not begin a trace", 0},
      {"<VAST/>\n", "f, line 1, does not begin a trace", 0},
      {"{\"trace\":\"xel\",\"version\":2}\n", "f, line 1, is a trace of version 2", 0},
      {"{\"trace\":\"xel\",\"version\":1,\"request\":{}}\n", "f, line 1, has a \"request\"", 0},
      {first + "[\n" + ready, "f, line 2, is broken: ", 0},
      {first + "{\"t\":1}\n", "f, line 2, has no \"t\" and \"kind\"", 0},
      {first + ready + "{\"t\":1,\"kind\":\"httpRequest\",\"id\":1,\"url\":\"\"}\n",
       "f, line 3, is of kind \"httpRequest\" but has no valid \"method\"", 0},
      {first + "{\"t\":1,\"kind\":\"httpResult\",\"id\":1}\n",
       "f, line 2, is of kind \"httpResult\" but has no valid \"status\"", 0},
      {first + std::string(1000, '['), "", 2},
      {first + std::string(1000, '[') + "\n", "f, line 2, is broken: The JSON text is nested", 0},
  };
  for (const auto& [text, fault, cutOffLine] : cases) {
    const auto result = replay(text);
    const auto told = result.fault ? result.fault->text("f") : "";
    EXPECT_EQ(told.substr(0, fault.size()), fault) << text;
    EXPECT_EQ(told.empty(), fault.empty()) << told;
    EXPECT_EQ(result.cutOffLine, cutOffLine) << text;
  }
}

}  // namespace
}  // namespace xel::test
