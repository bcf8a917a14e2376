#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
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

  /// There is a document that the library does not have yet.
  void documentKnown(const StreamDocument& document);
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
  void meet(const std::string& under);
  void jump(std::int64_t from, std::int64_t to, double time);
  void explain(DocumentEvent& event);

  const bool isLive_;
  std::vector<DocumentEvent> events_;
  /// Indexes into `events_`, by what they stand under.
  std::map<std::string, std::vector<std::size_t>, std::less<>> indexes_;
  /// Under which the library's present document has events.
  std::set<std::string, std::less<>> present_;
  std::set<std::string, std::less<>> adsWithVast_;
  std::set<std::string, std::less<>> knownAds_;
  bool hasDocument_ = false;

  std::vector<std::size_t> met_;
  std::vector<std::string> textsWithoutEvent_;
  std::int64_t lastSecond_ = -1;
  double lastTime_ = 0;

  std::set<std::string, std::less<>> started_;
  std::set<std::string, std::less<>> completed_;
  std::set<std::string, std::less<>> overrun_;
  std::string currentAd_;
};

}  // namespace xel::simulate
