#pragma once

#include <cstdint>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

#include <boost/json.hpp>

#include "xel/simulation/StreamInfoBuilder.h"

namespace xel::test {

/// Stream info documents that are mostly sound, with gaps, wrong types and odd numbers, and what
/// may happen in their streams.
class RandomDocuments {
 public:
  /// A number from 0 to less than the bound; always 0 makes sound documents.
  using Below = std::function<std::size_t(std::size_t bound)>;

  explicit RandomDocuments(Below random) : random_(std::move(random)) {}

  std::size_t below(std::size_t bound) { return random_(bound); }
  bool oneIn(std::size_t n) { return below(n) == n - 1; }
  std::string adKey() { return "ad" + std::to_string(below(30)); }
  /// The text of timed metadata that may be among a live document's.
  std::string mark() {
    const char* types[] = {"start", "firstquartile", "midpoint", "thirdquartile", "complete"};
    return adKey() + "," + types[below(std::size(types))];
  }
  double time() {
    using Limits = std::numeric_limits<double>;
    const double odd[] = {Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 1e300,
                          -0.5};
    return oneIn(50) ? odd[below(std::size(odd))] : static_cast<double>(below(600)) / 8;
  }

  std::string document(bool live) {
    namespace json = boost::json;
    auto builder =
        live ? simulation::StreamInfoBuilder::live() : simulation::StreamInfoBuilder::vod();
    for (std::size_t i = below(5); i > 0; --i) {
      builder.addBreak("break" + std::to_string(i), static_cast<double>(below(60)));
      for (std::size_t ads = below(6); ads > 0; --ads) {
        builder.addAd(adKey(), static_cast<double>(below(80)) / 8);
      }
    }
    return spoiled(builder.build());
  }

  /// The JSON text with gaps, wrong types and odd numbers in it.
  std::string spoiled(const std::string& text) {
    if (!oneIn(2)) return text;
    boost::json::value value = boost::json::parse(text);
    spoil(value);
    std::string left = boost::json::serialize(value);
    if (oneIn(20)) left.resize(below(left.size()));
    return left;
  }

 private:
  void spoil(boost::json::value& value) {
    namespace json = boost::json;
    const json::value odd[] = {
        nullptr, true,       -1, 2,       1e300,          -0x1p63,
        0.5,     UINT64_MAX, "", "start", json::array{1}, json::object{{"type", "start"}}};
    if (oneIn(40)) value = odd[below(std::size(odd))];
    if (value.is_object()) {
      for (auto& member : value.as_object()) spoil(member.value());
    } else if (value.is_array()) {
      for (auto& element : value.as_array()) spoil(element);
    } else if (value.is_string() && oneIn(20)) {
      value.as_string().resize(below(value.as_string().size() + 1));
    }
  }

  const Below random_;
};

}  // namespace xel::test
