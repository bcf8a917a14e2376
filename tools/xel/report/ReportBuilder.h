#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "xel/platform/JSONValue.h"
#include "xel/simulation/TraceReader.h"

#include "report/AdTracker.h"
#include "report/DocumentTracker.h"
#include "report/PathThinner.h"
#include "report/ReportModel.h"
#include "report/RequestTracker.h"

namespace xel::report {

/// Makes a report of a trace, line by line. One builder makes one report.
class ReportBuilder {
 public:
  /// @param header the first line of the trace.
  explicit ReportBuilder(const JSONValue& header);

  /// Takes the next line; one of a kind that it does not know changes nothing.
  void add(const simulation::TraceLine& line);

  /// @param isCutOff whether the last line of the trace was incomplete.
  Report finish(bool isCutOff);

 private:
  using Handler = void (ReportBuilder::*)(const JSONValue& line);
  static const std::map<std::string_view, Handler>& handlers();

  void addRequest(const JSONValue& line);
  void addResult(const JSONValue& line);
  void addLoad(const JSONValue& line);
  void addReady(const JSONValue& line);
  void addProgress(const JSONValue& line);
  void addMetadata(const JSONValue& line);
  void addFailure(const JSONValue& line);
  void addDelegateCall(const JSONValue& line);
  void addLogLine(const JSONValue& line);
  void addRelease(const JSONValue& line);
  void addSeek(const JSONValue& line);
  void addPause(const JSONValue& line);
  void addResume(const JSONValue& line);
  void addMissed(const JSONValue& line);
  void addEnd(const JSONValue& line);

  void addPlayerEvent(std::string name, std::string detail, bool isFailure = false);
  void noteJump(double position);
  void endPath();
  void endStream();
  void endPause();

  Report report_;
  Moment now_;
  AdTracker ads_{report_, now_};
  DocumentTracker documents_{report_, now_};
  RequestTracker requests_{report_, now_};
  PathThinner path_;
  bool isReady_ = false;
  std::optional<double> seekTo_;
  std::optional<double> lastReport_;
  std::optional<double> pausedSince_;
  double speed_ = 1;
};

}  // namespace xel::report
