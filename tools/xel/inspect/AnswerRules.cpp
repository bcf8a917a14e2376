#include <string>
#include <string_view>

#include "xel/platform/HTTPClient.h"

#include "document/JSONPath.h"
#include "inspect/Rules.h"
#include "inspect/Wording.h"

namespace xel::inspect {
namespace {

std::optional<std::string> refusalOf(const JSONValue& answer, std::string_view member) {
  const auto url = answer[member].text();
  if (!url) return std::nullopt;
  HTTPRequest request;
  request.url = *url;
  return request.refusal();
}

void checkDocumentURL(const JSONValue& answer, std::string_view member, Findings& findings) {
  if (!answer[member].text()) {
    findings.add("answer-without-document", "$",
                 "The answer has no " + quoted(member) +
                     ", so the stream plays without ad events and pings.");
  } else if (const auto refusal = refusalOf(answer, member)) {
    findings.add("answer-url", memberPath("$", member),
                 "The stream info document is never fetched. " + *refusal);
  }
}

void checkManifestURL(const JSONValue& answer, std::string_view member, Findings& findings) {
  if (const auto refusal = refusalOf(answer, member)) {
    findings.add("answer-manifest-url", memberPath("$", member),
                 "The manifest goes to the player as it is. " + *refusal);
  }
}

void checkUnused(const JSONValue& answer, std::string_view member, std::string_view type,
                 Findings& findings) {
  if (!answer.has(member)) return;
  findings.add("answer-unused-member", memberPath("$", member),
               "A stream of type " + quoted(type) + " does not read this.");
}

void checkSubtitles(const JSONValue& answer, Findings& findings) {
  const auto subtitles = answer["subtitles"].elements();
  for (std::size_t i = 0; i < subtitles.size(); ++i) {
    if (subtitles[i]["webvtt"].text() || subtitles[i]["ttml"].text()) continue;
    findings.add("subtitle-without-location", elementPath("$.subtitles", i),
                 "The track has neither \"webvtt\" nor \"ttml\".");
  }
}

}  // namespace

void checkAnswer(const JSONValue& answer, const AnswerView& view, Findings& findings) {
  for (const std::string_view member : {"stream_id", "stream_manifest"}) {
    if (answer.has(member)) continue;
    findings.add("answer-incomplete", "$",
                 "The answer has no " + quoted(member) + ": " + quoted(view.error) + ".");
  }
  const auto type = answer["stream_type"].text();
  if (type == "live") {
    checkDocumentURL(answer, "id3_events_url", findings);
    checkManifestURL(answer, "preroll_manifest", findings);
    checkUnused(answer, "time_events_url", *type, findings);
  } else if (type == "on_demand") {
    checkDocumentURL(answer, "time_events_url", findings);
    for (const auto member : {"id3_events_url", "polling_frequency", "preroll_manifest"}) {
      checkUnused(answer, member, *type, findings);
    }
  } else {
    findings.add("answer-stream-type", "$",
                 (type ? "The stream type is " + quoted(*type) : "The answer has no stream type") +
                     ", so nothing is played: \"Stream initialized with invalid stream type\".");
  }
  if (type == "live" && answer["polling_frequency"].number().value_or(1) <= 0) {
    findings.add("polling-frequency", "$.polling_frequency",
                 "The polling frequency is not above 0, so the document is polled every " +
                     numberText(view.pollingPeriod.value_or(10)) + " s.");
  }
  checkManifestURL(answer, "stream_manifest", findings);
  checkSubtitles(answer, findings);
}

}  // namespace xel::inspect
