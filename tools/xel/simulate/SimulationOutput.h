#pragma once

#include <cstdio>
#include <string>

#include "simulate/Simulation.h"

namespace xel::simulate {

/// A view that also writes what the whole simulation came to.
class SimulationOutput : public SimulationView {
 public:
  virtual void conclude(const DocumentEvents& events) = 0;
};

/// One line for people for each event but the countdowns, with stream and content time.
class SimulationText final : public SimulationOutput {
 public:
  /// @param out stays open for as long as the output lives.
  explicit SimulationText(std::FILE* out);

  bool wantsCountdowns() const override { return false; }
  void show(double streamTime, double contentTime, const PlayEvent& event) override;
  void remark(double streamTime, double contentTime, const std::string& what,
              const std::string& about) override;
  void conclude(const DocumentEvents& events) override;

 private:
  void line(const std::string& text);

  std::FILE* const out_;
};

/// One JSON object a line: the lines of `xel play --json`, with "contentTime", then a "notFired"
/// for each event of the document that did not fire, an "unknownText" for each text that no
/// document knows, and a "summary".
class SimulationJSON final : public SimulationOutput {
 public:
  /// @param out stays open for as long as the output lives.
  explicit SimulationJSON(std::FILE* out) : out_(out) {}

  bool wantsCountdowns() const override { return true; }
  void show(double streamTime, double contentTime, const PlayEvent& event) override;
  void remark(double streamTime, double contentTime, const std::string& what,
              const std::string& about) override;
  void conclude(const DocumentEvents& events) override;

 private:
  void line(simulation::JSONWriter& line);

  std::FILE* const out_;
};

}  // namespace xel::simulate
