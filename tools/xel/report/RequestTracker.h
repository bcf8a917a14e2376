#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "xel/platform/JSONValue.h"

#include "report/ReportModel.h"

namespace xel::report {

/// Brings requests and their results together: pings, and what else was asked
/// of the ad server.
class RequestTracker {
 public:
  /// An answer that may be a document.
  struct Answer {
    std::string url;
    std::string body;
    bool isStreamInit = false;
  };

  /// Both must outlive the tracker.
  RequestTracker(Report& report, const Moment& now) : report_(report), now_(now) {}

  /// @param playingAd the ad that started last.
  void addRequest(const JSONValue& line, std::optional<std::size_t> playingAd);

  /// What came back for anything but a ping, where it did.
  std::optional<Answer> addResult(const JSONValue& line);

  /// Pings of a start go out just before the ad is reported.
  void adDidStart(std::size_t ad);

  /// When the stream was requested.
  std::optional<double> firstRequest() const { return firstRequest_; }

  void finish();

 private:
  struct Fetch {
    double time;
    std::string url;
    bool isStreamInit;
  };

  Event& addFetchEvent(const Fetch& fetch, std::string detail, bool isFailure);

  Report& report_;
  const Moment& now_;
  std::optional<double> firstRequest_;
  std::size_t fetches_ = 0;
  std::unordered_map<std::int64_t, std::size_t> openPings_;
  std::unordered_map<std::int64_t, Fetch> openFetches_;
  std::vector<std::size_t> pingsOfNextAd_;
};

/// An error of a trace in one sentence; "" for none.
std::string errorText(const JSONValue& error);

}  // namespace xel::report
