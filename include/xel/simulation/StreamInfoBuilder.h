#pragma once

#include <string>
#include <vector>

#include "xel/platform/Export.h"

namespace xel::simulation {

/// Writes a stream info document from ad breaks and their ads. A plain value.
///
/// Times and durations are seconds of stream time. Keys must be unique within the document.
///
///     auto document = StreamInfoBuilder::vod();
///     document.addBreak("break-1", 30).addAd("ad-1", 10).addAd("ad-2", 15).addAd("ad-3", 20);
///     server.answer(url, {200, document.build()});
class XEL_EXPORT StreamInfoBuilder {
 public:
  /// One event of one ad, and when it happens. In a live stream `text` is the timed metadata
  /// ("TXXX") that marks it.
  struct Event {
    double time;
    std::string type;
    std::string adKey;
    std::string text;
  };

  /// A document with "times" and "cuepoints". An ad starts in its first whole second, crosses a
  /// quartile in the second that holds it, and completes in its last whole second.
  static StreamInfoBuilder vod();
  /// A document with "tags". An ad crosses its quartiles where they lie, and completes a tenth of
  /// a second (or of its duration, if that is shorter) before its end.
  static StreamInfoBuilder live();

  /// A break without ads, which follow. Breaks may be added in any order.
  StreamInfoBuilder& addBreak(std::string key, double start);
  /// An ad at the end of the break added last, with a `VastBuilder::typical` document.
  StreamInfoBuilder& addAd(std::string key, double duration);
  StreamInfoBuilder& addAd(std::string key, double duration, std::string vast);

  /// Every event, in the order of breaks, ads and time.
  std::vector<Event> events() const;
  /// The document as JSON text.
  std::string build() const;

 private:
  struct Ad {
    std::string key;
    double duration;
    std::string vast;
  };
  struct Break {
    std::string key;
    double start;
    std::vector<Ad> ads;
    double duration() const;
  };

  explicit StreamInfoBuilder(bool live) : live_(live) {}
  void addEvents(const Ad& ad, double start, std::vector<Event>& events) const;

  bool live_;
  std::vector<Break> breaks_;
};

}  // namespace xel::simulation
