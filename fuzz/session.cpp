// Whole sessions: the input is a script of answers, playback, failures and of what hosts do, also
// inside the calls that they get. What the hosts hear must keep the rules of support/Viewer.h.

#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/support/CountingHTTPClient.h"
#include "fuzz/support/Viewer.h"
#include "support/RandomDocuments.h"

namespace xel::fuzz {
namespace {

using namespace simulation;

class Script {
 public:
  Script(const std::uint8_t* data, std::size_t size)
      : input_(data, size), random_([this](std::size_t bound) {
          return input_.ConsumeIntegralInRange<std::size_t>(0, bound - 1);
        }) {
    Platform counted = Platform::current();
    counted.http = http_ = std::make_shared<CountingHTTPClient>(counted.http);
    installed_ = std::make_unique<ScopedPlatform>(counted);
  }

  void run() {
    openOne();
    for (int steps = 0; input_.remaining_bytes() > 0 && steps < 300; ++steps) {
      step();
      platform_.loop().runUntilIdle();
      requireRules();
    }
    end();
  }

 private:
  Viewer& anyViewer() { return *viewers_[random_.below(viewers_.size())]; }
  bool coin() { return random_.below(2) == 1; }

  void addViewer() {
    if (viewers_.size() == 4) return;
    std::shared_ptr<ScriptedDisplay> display;
    if (!viewers_.empty() && coin()) display = anyViewer().display();
    if (!display) display = std::make_shared<ScriptedDisplay>();
    viewers_.push_back(std::make_unique<Viewer>(platform_, "v" + std::to_string(viewers_.size()),
                                                std::move(display)));
  }

  /// A session that is sure to begin, so that most scripts get somewhere.
  void openOne() {
    addViewer();
    answerDocument(*viewers_[0]);
    open(*viewers_[0]);
  }

  void open(Viewer& viewer) {
    const bool live = coin();
    auto answer = live ? StreamInitAnswerBuilder::live() : StreamInitAnswerBuilder::vod();
    answer.manifest = viewer.manifestURL();
    (live ? answer.id3EventsURL : answer.timeEventsURL) = viewer.documentURL();
    if (live) answer.pollingFrequency = 1 + random_.below(20);
    if (live && coin()) answer.prerollManifest = viewer.manifestURL() + "?preroll";
    const std::size_t kind = random_.below(12);
    const std::string url = viewer.initURL(live);
    platform_.server().forget(url);
    if (kind == 9) {
      platform_.server().fail(url, TransferError::connectionLost, delay());
    } else if (kind == 10) {
      platform_.server().answer(url, {404, "no such stream", delay()});
    } else if (kind == 11) {
      platform_.server().answer(url, {200, random_.spoiled(answer.build()), delay()});
    } else {
      platform_.server().answer(url, {200, answer.build(), kind == 8 ? delay() : 0});
    }
    viewer.request(live);
  }

  double delay() { return static_cast<double>(random_.below(16)) / 2; }

  void answerDocument(Viewer& viewer) {
    switch (random_.below(8)) {
      case 5:
        return platform_.server().hang(viewer.documentURL());
      case 6:
        return platform_.server().answer(viewer.documentURL(), {503, "", delay()});
      case 7:
        return platform_.server().answer(viewer.documentURL(),
                                         {200, random_.document(coin()), delay()});
      default:
        platform_.server().answer(viewer.documentURL(), {200, random_.document(coin())});
    }
  }

  void step() {
    Viewer& viewer = anyViewer();
    switch (random_.below(16)) {
      case 0:
        return addViewer();
      case 1:
        return open(viewer);
      case 2:
        return answerDocument(viewer);
      case 3:
        return platform_.loop().advance(delay() * 2);
      case 4:
        return viewer.letGoOf(held());
      case 5:
        return viewer.doInside(random_.below(8), [this, &viewer] { actInside(viewer); });
      case 6:
        return viewer.takeNewHost();
      case 7:
        return viewer.requireConversionsAt(static_cast<double>(random_.below(800)) / 8);
      case 8:
        return viewer.failDisplay(coin());
      case 9:
        return platform_.server().answerOtherPings({coin() ? 204 : 500, "", delay()});
      case 10:
        return seek(viewer);
      case 11:
        return mark(viewer);
      case 12:
        if (const auto display = viewer.display()) display->reportReady();
        return;
      case 13:
        return viewer.requestNothing();
      default:
        return play(viewer);
    }
  }

  Viewer::Held held() { return static_cast<Viewer::Held>(random_.below(4)); }

  /// What a host does inside a call.
  void actInside(Viewer& viewer) {
    switch (random_.below(8)) {
      case 0:
        return open(viewer);
      case 1:
        return viewer.takeNewHost();
      case 2:
        return seek(viewer);
      case 3:
        return mark(viewer);
      case 4:
        viewer.doInside(random_.below(8), [this, &viewer] { actInside(viewer); });
        return play(viewer);
      default:
        return viewer.letGoOf(held());
    }
  }

  void seek(Viewer& viewer) {
    time_ = random_.time();
    if (const auto display = viewer.display()) display->reportProgress(time_);
  }
  void mark(Viewer& viewer) {
    const auto display = viewer.display();
    if (!display) return;
    for (std::size_t marks = 1 + random_.below(4); marks > 0; --marks) {
      display->reportTXXX(random_.mark());
    }
  }
  void play(Viewer& viewer) {
    const auto display = viewer.display();
    if (!(std::abs(time_) < 1e6)) time_ = 0;
    for (std::size_t ticks = random_.below(64); display && ticks > 0; --ticks) {
      display->reportProgress(time_ += 0.5);
    }
  }

  void requireRules() {
    const bool isOpening = http_->streamRequestsOpen() > 0;
    for (const auto& viewer : viewers_) {
      viewer->requireWhatIsLeft(isOpening);
      viewer->requireConversionsAt(0);
    }
    require(http_->open() == platform_.server().outstanding(), "a request that was not completed");
  }

  /// Waits for all answers, lets go of everything, and waits once more.
  void end() {
    constexpr double longestTransfer = 10;
    platform_.loop().advance(longestTransfer);
    requireRules();
    bool mayPoll = false;
    for (const auto& viewer : viewers_) {
      if (http_->streamRequestsOpen() == 0) viewer->requireAllAnswered();
      // A monitor that another one has replaced is not stopped.
      mayPoll |= viewer->requested() > 1;
      viewer->letGoOf(Viewer::Held::all);
    }
    requireRules();
    platform_.loop().advance(longestTransfer);
    requireRules();
    require(mayPoll || (platform_.loop().timerCount() == 0 && http_->open() == 0),
            "polling that goes on without a manager");
  }

  SimulatedPlatform platform_;
  std::shared_ptr<CountingHTTPClient> http_;
  std::unique_ptr<ScopedPlatform> installed_;
  FuzzedDataProvider input_;
  test::RandomDocuments random_;
  double time_ = 0;
  std::vector<std::unique_ptr<Viewer>> viewers_;
};

}  // namespace
}  // namespace xel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  xel::fuzz::Script(data, size).run();
  return 0;
}
