#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "xel/display/XELVideoDisplay.h"
#include "xel/platform/Export.h"

namespace xel::simulation {

// What a video display can report.

struct MetadataReport {
  TimedMetadata metadata;
};
struct ProgressReport {
  /// Seconds of stream time.
  double time;
};
struct FailureReport {
  /// May be null.
  std::shared_ptr<const Error> error;
};
struct ReadyReport {};

using DisplayReport = std::variant<MetadataReport, ProgressReport, FailureReport, ReadyReport>;

/// Told of what passes between a display and the library. Threads: main run loop.
class XEL_EXPORT DisplayObserver {
 public:
  virtual ~DisplayObserver();
  /// Before the display is told to load. Must not load another stream.
  virtual void displayWillLoad(const std::string& url, const std::vector<JSONValue>& subtitles) = 0;
  /// After the display was told, and returned.
  virtual void displayDidLoad() {}
  /// Before the library hears of a report. Returning false keeps it from the library.
  virtual bool displayWillReport(const DisplayReport& report) = 0;
  /// After the library heard of a report, or would have if it still were the delegate.
  virtual void displayDidReport(const DisplayReport& report) = 0;
};

/// A video display that passes everything on between another one and the library, and lets an
/// observer see it.
///
/// Ownership: holds the other display, and becomes its delegate; the observer is not kept alive. It
/// may be let go of inside any of its reports. Threads: main run loop.
class XEL_EXPORT ObservingDisplay final : public XELVideoDisplay, private XELVideoDisplayDelegate {
  struct Token {
    explicit Token() = default;
  };

 public:
  /// Never null.
  static std::shared_ptr<ObservingDisplay> make(std::shared_ptr<XELVideoDisplay> display,
                                                std::weak_ptr<DisplayObserver> observer);
  ObservingDisplay(Token, std::shared_ptr<XELVideoDisplay> display,
                   std::weak_ptr<DisplayObserver> observer);
  ~ObservingDisplay() override;

  void loadURL_withSubtitles(const std::string& url,
                             const std::vector<JSONValue>& subtitles) override;
  std::shared_ptr<XELVideoDisplayDelegate> delegate() const override { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<XELVideoDisplayDelegate> delegate) override {
    delegate_ = std::move(delegate);
  }

 private:
  void videoDisplay_didReceiveTimedMetadata(XELVideoDisplay& display,
                                            const TimedMetadata& metadata) override;
  void videoDisplay_didProgressToTime(XELVideoDisplay& display, double time) override;
  void videoDisplay_didFailWithError(XELVideoDisplay& display,
                                     const std::shared_ptr<const Error>& error) override;
  void videoDisplayIsReadyForPlayback(XELVideoDisplay& display) override;
  void pass(const DisplayReport& report);

  const std::shared_ptr<XELVideoDisplay> display_;
  const std::weak_ptr<DisplayObserver> observer_;
  std::weak_ptr<XELVideoDisplayDelegate> delegate_;
};

}  // namespace xel::simulation
