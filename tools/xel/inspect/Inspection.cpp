#include "inspect/Inspection.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>

#include "common/UTF8.h"
#include "document/JSONPath.h"
#include "inspect/ClientRuns.h"
#include "inspect/Rules.h"
#include "inspect/TraceInspection.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

constexpr std::string_view wanted =
    "; looked for: an answer to a stream request (\"stream_id\", \"stream_manifest\"), a stream "
    "info "
    "document (\"ads\", \"times\", \"tags\"), a VAST document (<VAST>, <Ad>), a trace";

[[noreturn]] void refuse(const std::string& problem) {
  throw std::runtime_error(problem + std::string(wanted));
}

template <std::size_t count>
bool hasAny(const JSONValue& json, const std::array<std::string_view, count>& members) {
  return std::any_of(members.begin(), members.end(),
                     [&](std::string_view member) { return json.has(member); });
}

void checkAds(const Inspection& inspection, Findings& findings) {
  const auto& document = inspection.view.document;
  for (std::size_t i = 0; i < document.ads.size(); ++i) {
    if (document.ads[i].vast.value_or("").empty()) continue;
    const VastOutline vast(*document.ads[i].vast);
    const auto path = inspection.kind == DocumentKind::vast
                          ? std::string()
                          : memberPath(document.ads[i].path, "vast");
    Findings ofVast;
    checkVast(vast, path, ofVast);
    checkTracking(vast, inspection.view.ads[i], path, ofVast);
    checkCreatives(vast, path, ofVast);
    findings.addByPlace(ofVast.take());
  }
}

Inspection inspectVast(std::string_view text, const ClientFacts& facts) {
  Inspection inspection;
  inspection.kind = DocumentKind::vast;
  Findings findings;
  const auto vast = withValidUTF8(text);
  if (vast != text) {
    const auto differs = std::mismatch(text.begin(), text.end(), vast.begin(), vast.end()).first;
    const auto line = std::count(text.begin(), differs, '\n') + 1;
    findings.add("vast-not-utf8", {}, {static_cast<std::size_t>(line), 1},
                 "This line is not UTF-8, so the document is not well-formed; shown is what "
                 "follows once it is mended.");
  }
  const auto json =
      JSONValue::parse(R"({"ads":{"ad":{"break":"break","position":1,"duration":30,"vast":)" +
                       boost::json::serialize(boost::json::string(vast)) +
                       R"(}},"breaks":{"break":{"ads":1,"duration":30}}})")
          .value;
  inspection.view.document = StreamDocument::read(json);
  inspection.view.ads = runAds(json, inspection.view.document, facts);
  checkAds(inspection, findings);
  inspection.findings = findings.take();
  return inspection;
}

Inspection inspectStreamInfo(const JSONValue& json, std::string_view text,
                             const ClientFacts& facts) {
  Inspection inspection;
  auto& view = inspection.view;
  view.document = StreamDocument::read(json);
  view.ads = runAds(json, view.document, facts);
  if (view.document.kind == StreamDocument::Kind::onDemand) {
    view.playThrough = playThrough(json, view.document, facts);
  }
  Findings findings;
  checkDuplicateKeys(text, findings);
  checkStreamInfoTypes(json, findings);
  checkBreaks(view.document, findings);
  checkEvents(view, findings);
  if (view.playThrough) checkCuepoints(view, findings);
  checkAds(inspection, findings);
  inspection.findings = findings.take();
  return inspection;
}

Inspection inspectAnswer(const JSONValue& json, std::string_view text, const ClientFacts& facts) {
  Inspection inspection;
  inspection.kind = DocumentKind::answer;
  inspection.view.answer = runAnswer(std::string(text), facts);
  Findings findings;
  checkDuplicateKeys(text, findings);
  checkAnswerTypes(json, findings);
  checkAnswer(json, *inspection.view.answer, findings);
  inspection.findings = findings.take();
  return inspection;
}

/// Whether an Ad or VAST element begins anywhere.
bool isVast(std::string_view text) {
  for (const std::string_view tag : {"<VAST", "<Ad"}) {
    for (auto at = text.find(tag); at != std::string_view::npos; at = text.find(tag, at + 1)) {
      const auto behind = text.substr(at + tag.size(), 1);
      if (behind.empty() || std::string_view(" \t\r\n/>").find(behind) != std::string_view::npos) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace

Inspection::Counts Inspection::counts() const {
  Counts counts;
  for (const auto& finding : findings) {
    ++(finding.severity == Severity::error     ? counts.errors
       : finding.severity == Severity::warning ? counts.warnings
                                               : counts.notes);
  }
  for (const auto& part : parts) {
    const auto more = part.inspection.counts();
    counts.errors += more.errors;
    counts.warnings += more.warnings;
    counts.notes += more.notes;
  }
  return counts;
}

Inspection inspect(std::string_view text, const ClientFacts& facts) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  const auto start = text.find_first_not_of(" \t\r\n");
  if (start == std::string_view::npos) refuse("it is empty");
  if (text[start] == '<') {
    if (!isVast(text)) refuse("it is XML without an Ad element");
    return inspectVast(text, facts);
  }
  if (text[start] != '{') refuse("it is neither JSON nor XML");
  const auto lineEnd = text.find('\n', start);
  const auto firstLine = JSONValue::parse(text.substr(start, lineEnd - start)).value;
  if (firstLine["trace"].text() == "xel") return inspectTrace(text, facts);
  const auto parsed = JSONValue::parse(text);
  if (parsed.error) refuse("it is not JSON: " + parsed.error->description);
  constexpr std::array<std::string_view, 3> ofAnswer = {"stream_id", "stream_manifest",
                                                        "stream_type"};
  constexpr std::array<std::string_view, 5> ofStreamInfo = {"ads", "breaks", "tags", "times",
                                                            "cuepoints"};
  if (hasAny(parsed.value, ofAnswer)) return inspectAnswer(parsed.value, text, facts);
  if (hasAny(parsed.value, ofStreamInfo)) return inspectStreamInfo(parsed.value, text, facts);
  refuse("it is JSON with none of the members of a known document");
}

}  // namespace xel::inspect
