#include "inspect/TextReport.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <vector>

#include "common/PrintableText.h"
#include "inspect/AdText.h"
#include "inspect/TextPage.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

std::string secondsText(const std::optional<double>& seconds) {
  return seconds ? numberText(*seconds) + " s" : "? s";
}

void addAnswer(const AnswerView& answer, TextPage& page) {
  constexpr std::size_t label = 12;
  page.heading("Session");
  if (!answer.error.empty()) page.field(2, "error", label, answer.error);
  if (!answer.streamID) return;
  page.field(2, "stream id", label, *answer.streamID);
  if (!answer.documentURL) {
    page.field(2, "document", label, "none: no ad events, no pings");
  } else {
    page.field(2, "document", label, *answer.documentURL);
    page.field(2, "", label,
               answer.pollingPeriod ? "polled every " + secondsText(answer.pollingPeriod)
                                    : "fetched once");
  }
  if (answer.loads.empty()) page.field(2, "loads", label, "nothing");
  for (std::size_t i = 0; i < answer.loads.size(); ++i) {
    page.field(2, i == 0 ? "loads" : "then", label, answer.loads[i].url);
    for (const auto& subtitle : answer.loads[i].subtitles) {
      page.field(2, "", label, "with subtitles " + subtitle.serialize());
    }
  }
}

/// The breaks of a document, on demand by time.
void addTimeLine(const ClientView& view, TextPage& page) {
  const auto& document = view.document;
  page.heading("Time line");
  if (document.breaks.empty()) page.line(2, "no breaks");
  std::vector<const StreamDocument::Break*> breaks;
  for (const auto& adBreak : document.breaks) breaks.push_back(&adBreak);
  std::stable_sort(breaks.begin(), breaks.end(), [](const auto* a, const auto* b) {
    return a->start && (!b->start || *a->start < *b->start);
  });
  constexpr std::size_t time = 10;
  for (const auto* adBreak : breaks) {
    page.field(
        2, adBreak->start ? clockText(*adBreak->start) : "", time,
        "break " + quoted(adBreak->key) + ", " + secondsText(adBreak->duration) + ", " +
            (adBreak->totalAds == 1 ? "1 ad" : countText(adBreak->totalAds.value_or(-1)) + " ads"));
    for (const auto index : adBreak->ads) {
      const auto& ad = document.ads[index];
      page.field(2, ad.start ? clockText(*ad.start) : "", time,
                 "  ad " + quoted(ad.key) + ", " + secondsText(ad.duration) + ", position " +
                     countText(ad.position.value_or(-1)));
    }
  }
  if (!view.playThrough) return;
  page.heading("Cue points");
  if (view.playThrough->cuepoints.empty()) page.line(2, "none");
  for (const auto& cuepoint : view.playThrough->cuepoints) {
    page.line(2, clockText(cuepoint->startTime()) + " to " + clockText(cuepoint->endTime()) +
                     (cuepoint->isPlayed() ? "" : ", never marked played"));
  }
}

/// Where the document of a place stands; empty for the place in an XML document of its own.
std::string_view documentOf(const Finding& finding) {
  if (!finding.isInXML()) return finding.place;
  const auto space = finding.place.rfind(' ');
  return std::string_view(finding.place).substr(0, space == std::string::npos ? 0 : space);
}

void addFindings(const std::vector<Finding>& findings, TextPage& page) {
  if (findings.empty()) return;
  page.heading("Findings");
  std::map<std::string_view, std::vector<const Finding*>> groups;
  std::vector<std::string_view> order;
  for (const auto& finding : findings) {
    auto& group = groups[documentOf(finding)];
    if (group.empty()) order.push_back(documentOf(finding));
    group.push_back(&finding);
  }
  for (const auto document : order) {
    if (!document.empty()) page.line(2, document);
    for (const auto* finding : groups[document]) {
      const auto place =
          finding->isInXML() ? finding->place.substr(finding->place.rfind(' ') + 1) + "  " : "";
      page.rule(4, place, finding->severity, finding->rule);
      page.paragraph(6, finding->text);
      page.paragraph(6, "Remedy: " + std::string(finding->remedy()));
    }
  }
}

std::string kindText(const Inspection& inspection) {
  switch (inspection.kind) {
    case DocumentKind::answer:
      return "answer to a stream request";
    case DocumentKind::streamInfo: {
      const auto kind = inspection.view.document.kind;
      return std::string("stream info document") + (kind == StreamDocument::Kind::live ? ", live"
                                                    : kind == StreamDocument::Kind::onDemand
                                                        ? ", on demand"
                                                        : ", without events");
    }
    case DocumentKind::vast:
      return "VAST document";
    case DocumentKind::trace:
      return "trace with " + counted(inspection.parts.size(), "document");
  }
  return {};
}

void addInspection(const Inspection& inspection, TextPage& page) {
  page.line(0, "This is a" + std::string(inspection.kind == DocumentKind::answer ? "n " : " ") +
                   kindText(inspection) + ".");
  for (const auto& part : inspection.parts) {
    page.heading("Line " + std::to_string(part.line) + ", " +
                 (part.times == 1 ? "once" : std::to_string(part.times) + " times") + ": " +
                 part.url);
    addInspection(part.inspection, page);
  }
  const auto& view = inspection.view;
  if (view.answer) addAnswer(*view.answer, page);
  if (inspection.kind == DocumentKind::streamInfo) addTimeLine(view, page);
  addAds(inspection, page);
  addFindings(inspection.findings, page);
}

}  // namespace

std::string textReport(const Inspection& inspection, bool inColour) {
  TextPage page(inColour);
  addInspection(inspection, page);
  return page.text();
}

std::string textRules(bool inColour) {
  TextPage page(inColour);
  for (const auto& rule : ruleTable) {
    page.rule(0, "", rule.severity, rule.id);
    page.paragraph(9, rule.summary);
    page.paragraph(9, "Remedy: " + std::string(rule.remedy));
  }
  return page.text();
}

std::string countsText(const Inspection::Counts& counts) {
  return counted(counts.errors, "error") + ", " + counted(counts.warnings, "warning") + ", " +
         counted(counts.notes, "note");
}

}  // namespace xel::inspect
