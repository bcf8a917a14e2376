#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "xel/session/XELStreamManager.h"
#include "xel/simulation/simulation.h"

#include "document/StreamDocument.h"
#include "play/PlayEvent.h"
#include "simulate/DocumentEvents.h"
#include "simulate/SimulationStep.h"

namespace xel::simulate {

/// Told of what happens in a simulated session. Times are seconds.
class SimulationView {
 public:
  virtual ~SimulationView() = default;
  virtual void show(double streamTime, double contentTime, const PlayEvent& event) = 0;
  /// Whether `show` is to be called for each countdown too.
  virtual bool wantsCountdowns() const = 0;
  /// Something that is not an event of the library, in words.
  virtual void remark(double streamTime, double contentTime, const std::string& what,
                      const std::string& about) = 0;
};

struct SimulationSettings {
  bool isLive = false;
  /// Seconds between two polls of a live document; absent: as the library has it.
  std::optional<double> pollingPeriod = {};
  std::array<std::string, 2> measurementDomains = Services().measurementDomains;
  /// Texts that come by themselves when playback reaches their stream times; ascending.
  std::vector<std::pair<double, std::string>> texts = {};
};

/// One session of the library without network, player and clock.
///
/// The player loads what it is told to and plays at once; it reports progress on every tick, and
/// right after a seek.
class Simulation {
 public:
  /// @param view lives longer than the simulation.
  Simulation(const std::string& document, SimulationSettings settings, SimulationView& view);
  ~Simulation();

  void run(const std::vector<SimulationStep>& steps);
  const DocumentEvents& documentEvents() const noexcept { return events_; }

 private:
  void take(const PlayFor& step) { play(position_ + step.seconds); }
  void take(const PlayTo& step) { play(step.time); }
  void take(const SeekTo& step);
  void take(const Pause& step);
  void take(const Tick& step) { tick_ = step.seconds; }
  void take(const Text& step);
  void take(const DocumentAnswer& step);

  void beginSession(double position = 0);
  void play(double to);
  void playOn(double to);
  void report(double time);
  void reportText(const std::string& text);
  void hear(const simulation::RecordingDelegate::Event& event);
  void show(const PlayEvent& event);
  void remark(const std::string& what, const std::string& about);
  double contentTime() const;

  const SimulationSettings settings_;
  SimulationView& view_;
  DocumentEvents events_;
  const simulation::SimulatedPlatform platform_;
  const ScopedPlatform watched_;
  const std::shared_ptr<simulation::ScriptedDisplay> display_;
  const std::shared_ptr<simulation::RecordingDelegate> delegate_;
  std::shared_ptr<XELStreamManager> manager_;
  double tick_ = 0.2;
  double position_ = 0;
};

}  // namespace xel::simulate
