#include "inspect/JSONReport.h"

#include <algorithm>

#include "xel/simulation/JSONWriter.h"

#include "inspect/AdEvents.h"

namespace xel::inspect {
namespace {

using simulation::JSONWriter;

void write(const AnswerView& answer, JSONWriter& out) {
  out.beginObject()
      .member("streamID", answer.streamID)
      .member("documentURL", answer.documentURL)
      .member("pollingPeriod", answer.pollingPeriod);
  out.name("error");
  answer.error.empty() ? out.value(nullptr) : out.value(answer.error);
  out.name("loads").beginArray();
  for (const auto& load : answer.loads) {
    out.beginObject().member("url", load.url).member("subtitles", load.subtitles).endObject();
  }
  out.endArray().endObject();
}

void write(const AdEvent& event, JSONWriter& out) {
  out.beginObject()
      .member("event", event.type)
      .member("seconds", event.seconds)
      .member("tags", event.tags);
  out.name("pings").beginArray();
  for (const auto& ping : event.pings) {
    out.beginObject().member("url", ping.url).member("refusal", ping.refusal).endObject();
  }
  out.endArray().endObject();
}

void writeBreaks(const StreamDocument& document, JSONWriter& out) {
  out.name("breaks").beginArray();
  for (const auto& adBreak : document.breaks) {
    out.beginObject()
        .member("adBreakKey", adBreak.key)
        .member("totalAds", adBreak.totalAds)
        .member("duration", adBreak.duration)
        .member("start", adBreak.start);
    out.name("ads").beginArray();
    for (const auto ad : adBreak.ads) out.value(document.ads[ad].key);
    out.endArray().endObject();
  }
  out.endArray();
}

void writeAds(const ClientView& view, JSONWriter& out) {
  const auto events = adEvents(view);
  out.name("ads").beginArray();
  for (std::size_t i = 0; i < view.ads.size(); ++i) {
    const auto started = view.playThrough ? view.playThrough->ads[i] : nullptr;
    out.beginObject()
        .member("adKey", view.document.ads[i].key)
        .member("place", view.document.ads[i].path)
        .member("ad", started ? started : view.ads[i].ad);
    out.member("starts", view.ads[i].ad && events[i].front().isReported());
    out.name("events").beginArray();
    for (const auto& event : events[i]) write(event, out);
    out.endArray().endObject();
  }
  out.endArray();
}

std::string_view nameOf(DocumentKind kind) {
  switch (kind) {
    case DocumentKind::answer:
      return "answer";
    case DocumentKind::streamInfo:
      return "streamInfo";
    case DocumentKind::vast:
      return "vast";
    case DocumentKind::trace:
      return "trace";
  }
  return {};
}

void writeMembers(const Inspection& inspection, JSONWriter& out) {
  const auto& view = inspection.view;
  out.member("kind", nameOf(inspection.kind));
  if (view.answer) {
    out.name("answer");
    write(*view.answer, out);
  }
  if (inspection.kind == DocumentKind::streamInfo) writeBreaks(view.document, out);
  if (!view.ads.empty() || inspection.kind == DocumentKind::streamInfo) writeAds(view, out);
  if (view.playThrough) out.member("cuepoints", view.playThrough->cuepoints);
  if (inspection.kind == DocumentKind::trace) {
    out.name("documents").beginArray();
    for (const auto& part : inspection.parts) {
      out.beginObject()
          .member("line", part.line)
          .member("times", part.times)
          .member("url", part.url);
      writeMembers(part.inspection, out);
      out.endObject();
    }
    out.endArray();
    return;
  }
  out.name("findings").beginArray();
  for (const auto& finding : inspection.findings) {
    out.beginObject()
        .member("rule", finding.rule)
        .member("severity", severityName(finding.severity))
        .member("place", finding.place)
        .member("text", finding.text)
        .member("remedy", finding.remedy())
        .endObject();
  }
  out.endArray();
}

}  // namespace

std::string jsonReport(const std::string& file, const Inspection& inspection) {
  JSONWriter out;
  out.beginObject().member("file", file);
  writeMembers(inspection, out);
  const auto counts = inspection.counts();
  out.member("errors", counts.errors)
      .member("warnings", counts.warnings)
      .member("notes", counts.notes)
      .endObject();
  return out.text();
}

std::string jsonRules() {
  JSONWriter out;
  out.beginArray();
  for (const auto& rule : ruleTable) {
    out.beginObject()
        .member("rule", rule.id)
        .member("severity", severityName(rule.severity))
        .member("summary", rule.summary)
        .member("remedy", rule.remedy)
        .endObject();
  }
  return out.endArray().text();
}

}  // namespace xel::inspect
