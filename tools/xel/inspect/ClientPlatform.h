#pragma once

#include <memory>
#include <string>

#include "xel/session/XELStreamManager.h"
#include "xel/simulation/simulation.h"

#include "inspect/ClientView.h"

namespace xel::inspect {

/// A platform of the simulation kit on which the library says the same of itself as in the field.
class ClientPlatform {
 public:
  explicit ClientPlatform(const ClientFacts& facts);

  simulation::CannedAdServer& server() const noexcept { return platform_.server(); }
  simulation::VirtualRunLoop& loop() const noexcept { return platform_.loop(); }
  const std::string& manifestSuffix() const noexcept { return manifestSuffix_; }

  /// What the next stream request is answered with.
  void answerNext(const std::string& answer) const;

 private:
  const std::string manifestSuffix_;
  const simulation::SimulatedPlatform platform_;
};

/// A session of the library, opened with the platform's next answer; no time passes. Sessions on
/// one platform run one after another.
struct ClientSession {
  explicit ClientSession(const ClientPlatform& platform);

  const std::shared_ptr<simulation::ScriptedDisplay> display;
  const std::shared_ptr<simulation::RecordingDelegate> delegate;
  const std::shared_ptr<XELStreamManager> manager;
};

}  // namespace xel::inspect
