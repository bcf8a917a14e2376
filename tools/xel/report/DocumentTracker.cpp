#include "report/DocumentTracker.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <stdexcept>
#include <utility>

#include "common/PrintableText.h"
#include "inspect/Inspection.h"

namespace xel::report {
namespace {

/// A fault that a document has in every ad is told this often.
constexpr std::size_t findingsOfRule = 50;
/// The time that inspection takes grows with their square.
constexpr std::size_t mostInspectedAds = 2000;
constexpr auto unusableVast = "Its VAST holds no ad that can be used.";

}  // namespace

void DocumentTracker::addStreamInitAnswer(std::string body) {
  const auto answer = JSONValue::parse(body).value;
  if (const auto url = answer["preroll_manifest"].text()) prerollManifest_ = std::string(*url);
  streamInitAnswer_ = std::move(body);
}

void DocumentTracker::addDocument(std::string url, std::string body) {
  auto& last = lastDocuments_[std::move(url)];
  if (body == last.body) return;
  auto parsed = JSONValue::parse(body).value;
  last = {std::move(body)};
  if (!parsed.isObject()) return;
  current_ = std::move(parsed);

  auto document = StreamDocument::read(current_);
  last.ads = document.ads.size();
  if (document.kind != StreamDocument::Kind::withoutEvents) kind_ = document.kind;
  for (auto& ad : document.ads) {
    const auto [entry, isNew] = promisedIndexes_.emplace(ad.key, promised_.size());
    if (isNew) promised_.push_back({std::move(ad), now_.time, {}});
  }
  for (auto& tag : document.tags) {
    if (tag.event.type != "start") continue;
    const auto promised = promisedIndexes_.find(tag.event.adKey);
    if (promised == promisedIndexes_.end()) continue;
    auto& texts = promised_[promised->second].texts;
    if (std::find(texts.begin(), texts.end(), tag.text) == texts.end()) {
      texts.push_back(std::move(tag.text));
    }
  }
}

void DocumentTracker::addProgress(double position) {
  constexpr double largest = 1e15;
  if (std::abs(position) > largest) return;
  visited_.emplace(static_cast<std::int64_t>(std::floor(position)), now_.time);
}

void DocumentTracker::addText(const std::string& text) {
  if (!report_.session.isLive) return;
  ++report_.metadata.texts;
  if (!current_["tags"].has(text)) ++report_.metadata.unknownTexts;
  delivered_.emplace(text, now_.time);
}

void DocumentTracker::addAdEvent() {
  if (kind_ != StreamDocument::Kind::onDemand || !now_.position) return;
  // The library looks up the whole second that the playhead is in.
  const auto behind = *now_.position - std::floor(*now_.position);
  ++report_.metadata.events;
  report_.metadata.sum += behind;
  report_.metadata.worst = std::max(report_.metadata.worst, behind);
}

void DocumentTracker::finish() {
  addMissingAds();
  if (!streamInitAnswer_.empty()) addFindings("answer to the stream request", streamInitAnswer_);
  for (const auto& [url, document] : lastDocuments_) {
    if (document.ads <= mostInspectedAds) {
      addFindings(url, document.body);
    } else {
      report_.findings.push_back({.document = url,
                                  .text = "It has " + std::to_string(document.ads) +
                                          " ads, too many to inspect them here.",
                                  .remedy = "Give the recording to xel inspect."});
    }
  }
  std::stable_sort(report_.findings.begin(), report_.findings.end(),
                   [](const Finding& a, const Finding& b) { return a.severity < b.severity; });
}

void DocumentTracker::addMissingAds() {
  std::set<std::string_view> started;
  for (const auto& ad : report_.ads) started.insert(ad.key);
  std::vector<Ad> missing;
  for (const auto& promised : promised_) {
    if (started.count(promised.ad.key) != 0) continue;
    auto reason = whyNotStarted(promised);
    missing.push_back({.key = promised.ad.key,
                       .breakKey = promised.ad.breakKey,
                       .place = promised.ad.position.value_or(-1),
                       .duration = promised.ad.duration.value_or(0),
                       .position = promised.ad.start,
                       .outcome = AdOutcome::notStarted,
                       .why = std::move(reason.text),
                       .isExpected = reason.isExpected});
  }
  std::move(missing.begin(), missing.end(), std::back_inserter(report_.ads));
}

DocumentTracker::Reason DocumentTracker::whyNotStarted(const PromisedAd& promised) const {
  if (!promised.ad.vast) return {"The document has no VAST for it."};
  if (kind_ == StreamDocument::Kind::live) return whyNoText(promised);
  if (!promised.ad.start) return {"No second of the document starts it."};
  return whyNotMet(std::llround(*promised.ad.start), promised.knownSince);
}

DocumentTracker::Reason DocumentTracker::whyNotMet(std::int64_t second, double knownSince) const {
  if (const auto visit = visited_.find(second); visit != visited_.end()) {
    return {visit->second < knownSince ? "Its second was played before the document arrived."
                                       : unusableVast};
  }
  const auto start = static_cast<double>(second);
  const auto jump = std::find_if(
      report_.jumps.begin(), report_.jumps.end(),
      [start](const Jump& candidate) { return candidate.from <= start && start < candidate.to; });
  if (jump != report_.jumps.end()) {
    return {(jump->isSeek ? "A seek from " : "A jump of the stream's time from ") +
                clockText(jump->from) + " to " + clockText(jump->to) + " passed it by.",
            jump->isSeek};
  }
  if (visited_.empty()) return {"Nothing was played."};
  if (second < visited_.begin()->first) return {"Playback began behind it.", true};
  if (second > visited_.rbegin()->first) return {"Playback did not get that far.", true};
  return {"The player sent no report within its second."};
}

DocumentTracker::Reason DocumentTracker::whyNoText(const PromisedAd& promised) const {
  if (promised.texts.empty()) return {"No tag of the document starts it."};
  for (const auto& text : promised.texts) {
    const auto delivery = delivered_.find(text);
    if (delivery == delivered_.end()) continue;
    return {delivery->second < promised.knownSince
                ? "Its start text came before the document that knows it."
                : unusableVast};
  }
  return {"Its start text was not delivered.", report_.missedSegments == 0};
}

void DocumentTracker::addFindings(const std::string& document, const std::string& text) {
  const auto add = [&](Severity severity, std::string_view rule) -> Finding& {
    return report_.findings.emplace_back(
        Finding{.severity = severity, .rule = std::string(rule), .document = document});
  };
  try {
    std::map<std::string_view, std::size_t> counts;
    for (auto& finding : inspect::inspect(text).findings) {
      if (++counts[finding.rule] > findingsOfRule) continue;
      auto& added = add(finding.severity, finding.rule);
      added.place = std::move(finding.place);
      added.text = std::move(finding.text);
      added.remedy = finding.remedy();
    }
    for (const auto& [rule, count] : counts) {
      if (count <= findingsOfRule) continue;
      auto& added = add(inspect::ruleTable[inspect::ruleIndex(rule)].severity, rule);
      added.text = std::to_string(count - findingsOfRule) + " more like this.";
      added.remedy = "Give the recording to xel inspect to see them all.";
    }
  } catch (const std::runtime_error& error) {
    add(Severity::error, {}).text = error.what();
  }
}

}  // namespace xel::report
