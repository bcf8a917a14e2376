#include "serve/FaultList.h"

#include <stdexcept>
#include <utility>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

namespace xel::serve {

void FaultList::replace(std::vector<Fault> faults) {
  std::vector<Entry> entries;
  entries.reserve(faults.size());
  for (Fault& fault : faults) entries.push_back({std::move(fault)});
  const std::lock_guard lock(mutex_);
  entries_ = std::move(entries);
}

std::optional<Fault> FaultList::strike(Endpoint endpoint) {
  const std::lock_guard lock(mutex_);
  Entry* striking = nullptr;
  for (Entry& entry : entries_) {
    if (entry.fault.endpoint != endpoint) continue;
    if (entry.fault.concerns(++entry.requests) && !striking) striking = &entry;
  }
  if (!striking) return std::nullopt;
  ++striking->struck;
  return striking->fault;
}

std::string FaultList::json() const {
  boost::json::array list;
  const std::lock_guard lock(mutex_);
  for (const Entry& entry : entries_) {
    list.push_back(
        {{"fault", entry.fault.text}, {"requests", entry.requests}, {"struck", entry.struck}});
  }
  return boost::json::serialize(list);
}

std::vector<Fault> FaultList::parse(const std::string& json) {
  constexpr auto wanted = R"(the body must be a JSON array of texts, such as ["ping=hang"])";
  boost::json::error_code error;
  const auto parsed = boost::json::parse(json, error);
  if (error || !parsed.is_array()) throw std::invalid_argument(wanted);
  std::vector<Fault> faults;
  for (const auto& element : parsed.get_array()) {
    if (!element.is_string()) throw std::invalid_argument(wanted);
    faults.push_back(Fault::parse(std::string(element.get_string())));
  }
  return faults;
}

}  // namespace xel::serve
