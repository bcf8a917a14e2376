#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "xel/session/XELLiveStreamRequest.h"
#include "xel/session/XELStreamManager.h"
#include "xel/session/XELVODStreamRequest.h"
#include "xel/simulation/simulation.h"

#include "fuzz/support/Require.h"
#include "fuzz/support/TimeRules.h"
#include "support/StreamRules.h"

namespace xel::fuzz {

/// A host application with one manager, which requires that what it hears keeps the rules. It may
/// let go of its manager, display and delegate at any time.
class Viewer {
 public:
  enum class Held { manager, display, host, all };

  /// @param name part of all its URLs.
  Viewer(simulation::SimulatedPlatform& platform, std::string name,
         std::shared_ptr<simulation::ScriptedDisplay> display)
      : platform_(platform),
        name_(std::move(name)),
        display_(std::move(display)),
        manager_(XELStreamManager::initWithVideoDisplay(display_)),
        weakDisplay_(display_),
        weakManager_(manager_) {
    takeNewHost();
  }
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

  std::string initURL(bool live) const {
    return live ? platform_.liveInitURL(name_) : platform_.vodInitURL(name_, "video");
  }
  std::string documentURL() const { return "https://ads.example/" + name_ + ".json"; }
  std::string manifestURL() const { return "https://media.example/" + name_ + ".m3u8"; }

  /// Null once all have let go of it.
  std::shared_ptr<simulation::ScriptedDisplay> display() const { return weakDisplay_.lock(); }
  bool hasManager() const { return manager_ != nullptr; }

  /// @param suffix for the manifest's URL.
  void request(bool live, std::optional<std::string> suffix = {}) {
    if (!manager_) return;
    ++requested_;
    std::shared_ptr<XELStreamRequest> request = XELLiveStreamRequest::initWithAssetKey(name_);
    if (!live) {
      request = XELVODStreamRequest::initWithContentSourceID_videoID(name_, "video");
    }
    request->setManifestURLSuffix(std::move(suffix));
    manager_->requestStream(std::move(request));
  }
  void requestNothing() {
    if (!manager_) return;
    ++requested_;
    manager_->requestStream(nullptr);
  }

  void letGoOf(Held what) {
    if (what == Held::manager || what == Held::all) manager_.reset();
    if (what == Held::display || what == Held::all) display_.reset();
    if (what == Held::host || what == Held::all) {
      host_.reset();
      heardAll_ = false;
    }
  }
  /// Another delegate in the place of the one there is.
  void takeNewHost() {
    if (!manager_) return;
    host_ = std::make_shared<simulation::RecordingDelegate>();
    host_->onEvent = [this](const auto& event) { hear(event); };
    weakHost_ = host_;
    manager_->setDelegate(host_);
  }

  /// The display fails, with an error of its own or with none.
  void failDisplay(bool withError) {
    static const auto error = std::make_shared<const Error>(Error{"Player", 1, "broken", nullptr});
    if (const auto display = this->display()) display->reportFailure(withError ? error : nullptr);
  }

  /// Runs once, inside the delegate call that comes after so many others.
  void doInside(std::size_t call, std::function<void()> action) {
    callsToGo_ = call;
    action_ = std::move(action);
  }

  /// Requires what must hold when no delegate call is under way.
  /// @param isOpening whether a stream request is, of this or another manager.
  void requireWhatIsLeft(bool isOpening) {
    require(host_ || weakHost_.expired(), "a delegate that the library holds");
    require(manager_ || isOpening || weakManager_.expired(), "a manager that the library holds");
    const std::size_t loads = countLoads();
    require(!isOver_ || loads <= loads_, "a load after the manager is gone");
    isOver_ = !manager_ && !isOpening;
    loads_ = loads;
  }
  /// Requires that times can be converted: this one, and those at which breaks begin and end.
  /// @param time whole eighths of a second.
  void requireConversionsAt(double time) const {
    const bool hasOneStream = requested_ == 1 && initialised_ == 1 && failed_ == 0;
    if (!manager_ || !hasOneStream || !heardAll_ || !areSane(cuepoints_)) return;
    requireConversions(*manager_, cuepoints_, time);
    for (const auto& cuepoint : cuepoints_) {
      requireConversions(*manager_, cuepoints_, cuepoint->startTime());
      requireConversions(*manager_, cuepoints_, cuepoint->endTime());
    }
  }
  /// Once every stream request has been completed.
  void requireAllAnswered() const {
    require(!heardAll_ || requested_ == initialised_ + failedBefore_,
            "a stream request that was not answered once");
  }

  /// How many streams.
  std::size_t requested() const { return requested_; }

 private:
  void hear(const simulation::RecordingDelegate::Event& event) {
    require(manager_ || !weakManager_.expired(), "a call that outlives its manager");
    checkError(event);
    followStream(event);
    if (event.name == "didUpdateCuepoints") cuepoints_ = event.cuepoints;
    if (callsToGo_ == 0) {
      if (const auto action = std::exchange(action_, nullptr)) action();
    } else {
      --callsToGo_;
    }
  }

  std::size_t countLoads() const {
    const auto display = this->display();
    std::size_t count = 0;
    if (display) {
      for (const auto& load : display->loads()) count += load.url.starts_with(manifestURL());
    }
    return count;
  }

  void checkError(const simulation::RecordingDelegate::Event& event) {
    if (event.name == "didInitializeStream") ++initialised_;
    if (event.name != "didReceiveError" || !event.error || event.error->domain == "Player") return;
    for (auto error = event.error; error; error = error->underlying) {
      require(!error->domain.empty() && !error->description.empty(), "an error that says nothing");
    }
    const bool isOurs =
        event.error->domain == errorDomain || event.error->domain == httpErrorDomain;
    require(isOurs, "an error of an unknown domain");
    ++failed_;
    failedBefore_ += event.error->description != "Stream initialized with invalid stream type";
  }

  /// Each stream has a monitor of its own, which is the display's delegate.
  void followStream(const simulation::RecordingDelegate::Event& event) {
    if (!heardAll_) return;
    const auto display = this->display();
    const auto monitor = display ? display->delegate() : nullptr;
    if (monitor != monitor_.lock()) {
      monitor_ = monitor;
      rules_ = {};
    }
    const std::string wrong = rules_.follow(event);
    require(wrong.empty(), wrong + ": " + event.line);
  }

  simulation::SimulatedPlatform& platform_;
  const std::string name_;
  std::shared_ptr<simulation::ScriptedDisplay> display_;
  std::shared_ptr<XELStreamManager> manager_;
  std::shared_ptr<simulation::RecordingDelegate> host_;
  const std::weak_ptr<simulation::ScriptedDisplay> weakDisplay_;
  const std::weak_ptr<XELStreamManager> weakManager_;
  std::weak_ptr<simulation::RecordingDelegate> weakHost_;

  std::size_t requested_ = 0, initialised_ = 0, failed_ = 0, failedBefore_ = 0;
  /// Whether there has always been a delegate.
  bool heardAll_ = true;
  std::weak_ptr<XELVideoDisplayDelegate> monitor_;
  test::StreamRules rules_;
  Cuepoints cuepoints_;
  bool isOver_ = false;
  std::size_t loads_ = 0;

  std::size_t callsToGo_ = 0;
  std::function<void()> action_;
};

}  // namespace xel::fuzz
