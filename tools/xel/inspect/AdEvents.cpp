#include "inspect/AdEvents.h"

namespace xel::inspect {
namespace {

std::vector<AdEvent> eventsOf(const AdView& ad) {
  std::vector<AdEvent> events;
  for (const auto type : pingedEvents) {
    events.push_back({std::string(type), {}, {}, {}});
    for (const auto& ping : ad.pings) {
      if (ping.event == type) events.back().pings.push_back(ping);
    }
  }
  return events;
}

}  // namespace

std::vector<std::vector<AdEvent>> adEvents(const ClientView& view) {
  std::vector<std::vector<AdEvent>> result;
  for (const auto& ad : view.ads) result.push_back(eventsOf(ad));
  const auto& document = view.document;
  const auto report = [&](const StreamDocument::Event& event, auto add) {
    const auto* ad = document.adWithKey(event.adKey);
    if (!ad) return;
    for (auto& entry : result[static_cast<std::size_t>(ad - document.ads.data())]) {
      // Creativeview goes out with the start, whatever the document has of it.
      const bool isWithStart = entry.type == "creativeview" && event.type == "start";
      const bool isItself = entry.type == event.type && entry.type != "creativeview";
      if (isItself || isWithStart) add(entry);
    }
  };
  for (const auto& second : document.seconds) {
    if (!second.second || *second.second < 0) continue;
    for (const auto& event : second.events) {
      report(event,
             [&](AdEvent& entry) { entry.seconds.push_back(static_cast<double>(*second.second)); });
    }
  }
  for (const auto& tag : document.tags) {
    report(tag.event, [&](AdEvent& entry) { entry.tags.push_back(tag.text); });
  }
  return result;
}

}  // namespace xel::inspect
