#include "serve/Ledger.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "common/UTF8.h"

namespace xel::serve {

std::size_t Ledger::begin(Entry entry) {
  const std::lock_guard lock(mutex_);
  entry.time = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun_).count();
  entries_.push_back(std::move(entry));
  return entries_.size() - 1;
}

void Ledger::finish(std::size_t place, std::string body, std::optional<int> status) {
  const std::lock_guard lock(mutex_);
  entries_[place].body = std::move(body);
  entries_[place].status = status;
}

void Ledger::strike(std::size_t place, const std::string& fault, bool isAnswerLost) {
  const std::lock_guard lock(mutex_);
  entries_[place].fault = fault;
  entries_[place].isAnswerLost = isAnswerLost;
}

bool Ledger::isAnswerLost(std::size_t place) const {
  const std::lock_guard lock(mutex_);
  return entries_[place].isAnswerLost;
}

std::vector<Ledger::Entry> Ledger::entries() const {
  const std::lock_guard lock(mutex_);
  return entries_;
}

std::string Ledger::json() const {
  namespace json = boost::json;
  json::array ledger;
  const std::lock_guard lock(mutex_);
  for (const Entry& entry : entries_) {
    json::object headers;
    for (const auto& [name, value] : entry.headers) headers[name] = withValidUTF8(value);
    ledger.push_back({{"time", entry.time},
                      {"method", withValidUTF8(entry.method)},
                      {"target", withValidUTF8(entry.target)},
                      {"headers", std::move(headers)},
                      {"body", withValidUTF8(entry.body)},
                      {"status", entry.status ? json::value(*entry.status) : json::value()},
                      {"fault", entry.fault.empty() ? json::value() : json::value(entry.fault)}});
  }
  return json::serialize(ledger);
}

}  // namespace xel::serve
