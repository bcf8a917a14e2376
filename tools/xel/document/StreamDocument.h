#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xel/platform/JSONValue.h"

namespace xel {

/// A stream info document as plain data, read as the library reads it: what is missing and what has
/// the wrong type is absent. `path` tells where a part stands; times are seconds of stream time.
struct StreamDocument {
  /// Live documents mark events by the texts of timed metadata, on-demand ones by seconds. One that
  /// has both counts as on demand.
  enum class Kind { live, onDemand, withoutEvents };

  struct Ad {
    std::string key;
    std::string path;
    /// Empty when the document does not say.
    std::string breakKey;
    std::optional<std::int64_t> position;
    std::optional<double> duration;
    std::optional<std::string> vast;
    /// The first second that starts it; on demand only.
    std::optional<double> start;
  };

  struct Break {
    std::string key;
    /// Empty for a break that ads name and the document does not describe.
    std::string path;
    std::optional<std::int64_t> totalAds;
    std::optional<double> duration;
    /// Indexes into the document's ads, in document order.
    std::vector<std::size_t> ads;
    /// The earliest start of its ads.
    std::optional<double> start;
  };

  struct Event {
    std::string path;
    /// In lower case; empty when missing.
    std::string type;
    /// Empty when missing.
    std::string adKey;
  };

  struct Second {
    std::string key;
    std::string path;
    /// Absent when the key is not a whole number in the one form that is looked up.
    std::optional<std::int64_t> second;
    std::vector<Event> events;
  };

  struct Tag {
    std::string text;
    Event event;
  };

  struct Cuepoint {
    std::string path;
    std::optional<double> start;
    std::optional<double> end;
  };

  /// @param document an object; anything else gives an empty document.
  static StreamDocument read(const JSONValue& document);

  /// Null when there is no such ad.
  const Ad* adWithKey(std::string_view key) const;

  Kind kind = Kind::withoutEvents;
  /// In document order, like breaks, tags and cue points.
  std::vector<Ad> ads;
  std::vector<Break> breaks;
  /// Ascending; those that are never looked up stand at the end.
  std::vector<Second> seconds;
  std::vector<Tag> tags;
  std::vector<Cuepoint> cuepoints;

 private:
  void readBreaks(const JSONValue& document);
  void readSeconds(const JSONValue& document);
  void findStarts();

  std::map<std::string, std::size_t, std::less<>> adIndexes_;
};

}  // namespace xel
