#include "simulate/SimulationOutput.h"

#include <algorithm>

#include "common/PrintableText.h"
#include "play/EventText.h"
#include "play/JSONLines.h"

namespace xel::simulate {
namespace {

using simulation::JSONWriter;

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text + "  ";
}

struct Counts {
  explicit Counts(const std::vector<DocumentEvent>& events)
      : all(events.size()),
        fired(static_cast<std::size_t>(
            std::count_if(events.begin(), events.end(),
                          [](const DocumentEvent& event) { return event.hasFired; }))) {}
  std::size_t all;
  std::size_t fired;
};

}  // namespace

SimulationText::SimulationText(std::FILE* out) : out_(out) {
  line("stream    content   what                about");
}

void SimulationText::show(double streamTime, double contentTime, const PlayEvent& event) {
  if (const auto text = toLine(contentTime, event)) line(padded(clockText(streamTime), 8) + *text);
}

void SimulationText::remark(double streamTime, double contentTime, const std::string& what,
                            const std::string& about) {
  line(padded(clockText(streamTime), 8) + padded(clockText(contentTime), 8) + padded(what, 18) +
       printable(about));
}

void SimulationText::conclude(const DocumentEvents& documentEvents) {
  const auto events = documentEvents.all();
  const Counts counts(events);
  line("\n" + std::to_string(counts.fired) + " of the document's " + std::to_string(counts.all) +
       " events fired" + (counts.fired == counts.all ? "" : "; these did not:"));
  std::size_t width = 0;
  for (const auto& event : events) {
    if (!event.hasFired)
      width = std::max(width, printable(event.under + "  " + event.adKey).size());
  }
  for (const auto& event : events) {
    if (event.hasFired) continue;
    line("  " + padded(printable(event.under + "  " + event.adKey), width) +
         padded(printable(event.type), 13) + event.explanation);
  }
  for (const auto& text : documentEvents.unknownTexts()) {
    line("The text \"" + printable(text) + "\" came, and no document names it");
  }
}

void SimulationText::line(const std::string& text) { std::fputs((text + '\n').c_str(), out_); }

void SimulationJSON::show(double streamTime, double contentTime, const PlayEvent& event) {
  JSONWriter json;
  json.beginObject().member("t", streamTime).member("contentTime", contentTime);
  addMembers(json, event);
  line(json);
}

void SimulationJSON::remark(double streamTime, double contentTime, const std::string& what,
                            const std::string& about) {
  JSONWriter json;
  json.beginObject().member("t", streamTime).member("contentTime", contentTime);
  json.member("event", what).member("about", about);
  line(json);
}

void SimulationJSON::conclude(const DocumentEvents& documentEvents) {
  const auto events = documentEvents.all();
  for (const auto& event : events) {
    if (event.hasFired) continue;
    JSONWriter json;
    json.beginObject().member("event", "notFired").member("under", event.under);
    json.member("type", event.type).member("ad", event.adKey);
    json.member("reason", event.reason).member("explanation", event.explanation);
    line(json);
  }
  for (const auto& text : documentEvents.unknownTexts()) {
    JSONWriter json;
    json.beginObject().member("event", "unknownText").member("text", text);
    line(json);
  }
  const Counts counts(events);
  JSONWriter json;
  json.beginObject().member("event", "summary");
  json.member("documentEvents", counts.all).member("fired", counts.fired);
  line(json);
}

void SimulationJSON::line(JSONWriter& json) {
  std::fputs((json.endObject().text() + '\n').c_str(), out_);
}

}  // namespace xel::simulate
