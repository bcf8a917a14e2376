#include "inspect/TraceInspection.h"

#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "xel/simulation/TraceReader.h"

namespace xel::inspect {
namespace {

ClientFacts factsFrom(const JSONValue& header, ClientFacts facts) {
  const auto environment = header["environment"];
  const auto textOf = [](const JSONValue& value) {
    const auto text = value.text();
    return text ? std::optional<std::string>(*text) : std::nullopt;
  };
  if (environment.isObject()) {
    facts.libraryVersion = textOf(environment["libraryVersion"]);
    facts.applicationIdentifier = textOf(environment["applicationIdentifier"]);
  }
  const auto domains = header["services"]["measurementDomains"].elements();
  for (std::size_t i = 0; i < domains.size() && i < facts.measurementDomains.size(); ++i) {
    facts.measurementDomains[i] = domains[i].text().value_or("");
  }
  if (const auto suffix = textOf(header["request"]["manifestURLSuffix"])) {
    facts.manifestSuffix = *suffix;
  }
  return facts;
}

/// Whether the result of a request may hold a document: pings and failures do not.
bool mayHoldDocument(const JSONValue& result) {
  return result["status"].integer().value_or(400) < 400 &&
         !result["body"].text().value_or("").empty();
}

}  // namespace

Inspection inspectTrace(std::string_view trace, const ClientFacts& given) {
  std::istringstream in{std::string(trace)};
  simulation::TraceReader reader(in);
  const auto facts = factsFrom(reader.header(), given);
  Inspection inspection;
  inspection.kind = DocumentKind::trace;
  std::map<std::int64_t, std::string> urls;
  std::map<std::string, std::size_t, std::less<>> parts;
  while (const auto line = reader.next()) {
    const auto id = line->value["id"].integer().value_or(-1);
    if (line->kind == "httpRequest") urls[id] = line->value["url"].text().value_or("");
    if (line->kind != "httpResult" || !mayHoldDocument(line->value)) continue;
    const std::string body(*line->value["body"].text());
    const auto [entry, isNew] = parts.emplace(body, inspection.parts.size());
    if (!isNew) {
      ++inspection.parts[entry->second].times;
      continue;
    }
    try {
      inspection.parts.push_back({line->number, 1, urls[id], inspect(body, facts)});
    } catch (const std::runtime_error&) {
      // A body of something else, such as a page that a proxy sent.
      parts.erase(entry);
    }
  }
  if (reader.fault()) throw std::runtime_error(reader.fault()->text("it"));
  return inspection;
}

}  // namespace xel::inspect
