#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/JSONValue.h"

#include "document/StreamDocument.h"
#include "report/ReportModel.h"

namespace xel::report {

/// Holds what the session's documents promise against what was played: how
/// exactly events came, and which ads never started, and why.
class DocumentTracker {
 public:
  /// Both must outlive the tracker.
  DocumentTracker(Report& report, const Moment& now) : report_(report), now_(now) {}

  void addStreamInitAnswer(std::string body);
  void addDocument(std::string url, std::string body);

  void addProgress(double position);
  /// A "TXXX" text of the timed metadata.
  void addText(const std::string& text);
  /// An ad event that was reported at the current position.
  void addAdEvent();

  /// The stream that a live session shows first; absent where there is none.
  const std::optional<std::string>& prerollManifest() const { return prerollManifest_; }

  /// Adds to the report the ads that never started, and what is to be said about the answer to the
  /// stream request and about the last document from each URL.
  void finish();

 private:
  /// An ad of any of the documents, as the first one that has it says.
  struct PromisedAd {
    StreamDocument::Ad ad;
    double knownSince;
    /// Live: the texts that start it.
    std::vector<std::string> texts;
  };

  /// Why an ad did not start, and whether that is no fault.
  struct Reason {
    std::string text;
    bool isExpected = false;
  };

  void addMissingAds();
  void addFindings(const std::string& document, const std::string& text);
  Reason whyNotStarted(const PromisedAd& promised) const;
  Reason whyNotMet(std::int64_t second, double knownSince) const;
  Reason whyNoText(const PromisedAd& promised) const;

  Report& report_;
  const Moment& now_;
  std::optional<std::string> prerollManifest_;
  std::string streamInitAnswer_;
  struct Document {
    std::string body;
    std::size_t ads = 0;
  };
  /// By URL.
  std::map<std::string, Document> lastDocuments_;
  StreamDocument::Kind kind_ = StreamDocument::Kind::withoutEvents;
  JSONValue current_;
  std::vector<PromisedAd> promised_;
  std::map<std::string, std::size_t, std::less<>> promisedIndexes_;
  /// When the playhead was first in each second, and each text first delivered.
  std::map<std::int64_t, double> visited_;
  std::map<std::string, double> delivered_;
};

}  // namespace xel::report
