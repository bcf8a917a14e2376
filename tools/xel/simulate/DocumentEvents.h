#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "document/StreamDocument.h"

namespace xel::simulate {

/// An event of a document, and what became of it.
struct DocumentEvent {
  /// The second or the text of timed metadata that it stands under.
  std::string under;
  /// Of on-demand documents.
  std::optional<std::int64_t> second = {};
  /// In lower case, as in the document.
  std::string type;
  std::string adKey;
  bool hasFired = false;
  /// Why it has not fired, as an identifier such as "jumped-over" and as a sentence.
  std::string_view reason = "not-reached";
  std::string explanation = {};
};

/// Follows which events of a session's documents fire, and why the others do not.
///
/// It is told what the display reports and what the host hears, between `begin…` and `end`.
class DocumentEvents {
 public:
  /// @param isLive texts are looked up, else seconds.
  explicit DocumentEvents(bool isLive) : isLive_(isLive) {}

  /// The document that the session is about, should none arrive.
  void documentGiven(StreamDocument document) { given_ = std::move(document); }
  /// The library has a new document.
  void documentArrived(const StreamDocument& document);

  /// The display is about to report progress or a text.
  void beginProgress(double time);
  void beginText(const std::string& text);
  /// The host heard `adDidStart` and so on; `type` is the event's name in documents.
  void adEvent(std::string_view type, const std::string& adKey);
  void breakEnded();
  /// The display's report is over.
  void end();

  /// In the order of documents.
  std::vector<DocumentEvent> all() const;
  /// Texts that came and that no document knows, in the order of coming.
  std::vector<std::string> unknownTexts() const;

 private:
  /// Under, type and ad, and which of several such events it is.
  using Identity = std::tuple<std::string, std::string, std::string, std::size_t>;
  using Indexes = std::vector<std::size_t>;

  void add(const StreamDocument& document);
  void jump(std::int64_t to, double time);
  void meet(const std::string& under);
  void leave(std::string_view reason, std::string explanation);
  void explain(DocumentEvent& event);
  void explainStart(DocumentEvent& event);

  const bool isLive_;
  StreamDocument given_;
  std::vector<DocumentEvent> events_;
  std::map<Identity, std::size_t> indexes_;

  /// Of the library's present document: its events by what they stand under, and its ads.
  std::map<std::string, Indexes, std::less<>> present_;
  std::map<std::string, bool, std::less<>> hasVast_;
  bool hasDocument_ = false;

  Indexes met_;
  std::vector<std::string> textsWithoutEvent_;
  std::int64_t lastSecond_ = -1;
  double lastTime_ = 0;

  /// Ads whose start has been met, whether or not there was an ad to start.
  std::set<std::string, std::less<>> requested_;
  /// Ads that are not current any more, or never were: why.
  std::map<std::string, std::pair<std::string_view, std::string>, std::less<>> left_;
  std::string currentAd_;
  bool hasCompletedNow_ = false;
};

}  // namespace xel::simulate
