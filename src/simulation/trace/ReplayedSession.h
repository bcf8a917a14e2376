#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>

#include "xel/platform/Platform.h"
#include "xel/session/XELStreamManager.h"
#include "xel/simulation/ScriptedDisplay.h"

#include "simulation/trace/DelegateTap.h"
#include "simulation/trace/TraceStep.h"

namespace xel::simulation {

/// The library with everything around it as a trace tells: tells it what is recorded, and hears
/// what it does.
class ReplayedSession final {
 public:
  /// @param header the trace's first line. Installs a platform for as long as this lives.
  explicit ReplayedSession(const JSONValue& header);
  ~ReplayedSession();
  ReplayedSession(const ReplayedSession&) = delete;
  ReplayedSession& operator=(const ReplayedSession&) = delete;

  /// Lets the step happen, with all that comes of it.
  void run(TraceStep& step);

 private:
  class Client;
  class Loop;
  class Display;
  class Host;

  void request();
  void tell(const TraceLine& line);
  /// The library does something; `accept` takes the number that it has in the trace, 0 for none.
  void hear(TraceOutput output, const std::function<void(std::uint64_t)>& accept);
  void hear(TraceOutput output) {
    hear(std::move(output), [](std::uint64_t) {});
  }

  const JSONValue header_;
  TraceStep* step_ = nullptr;
  std::size_t openCalls_ = 0;
  std::map<std::uint64_t, HTTPClient::Completion> completions_;
  std::map<std::uint64_t, std::shared_ptr<std::function<void()>>> timers_;
  std::deque<std::function<void()>> posted_;
  std::shared_ptr<Display> display_;
  std::shared_ptr<Host> host_;
  std::unique_ptr<ScopedPlatform> platform_;
  std::shared_ptr<XELStreamManager> manager_;
};

}  // namespace xel::simulation
