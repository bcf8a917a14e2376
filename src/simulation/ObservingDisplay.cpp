#include "xel/simulation/ObservingDisplay.h"

#include <utility>

namespace xel::simulation {
namespace {

struct Tell {
  XELVideoDisplayDelegate& delegate;
  XELVideoDisplay& display;

  void operator()(const MetadataReport& report) const {
    delegate.videoDisplay_didReceiveTimedMetadata(display, report.metadata);
  }
  void operator()(const ProgressReport& report) const {
    delegate.videoDisplay_didProgressToTime(display, report.time);
  }
  void operator()(const FailureReport& report) const {
    delegate.videoDisplay_didFailWithError(display, report.error);
  }
  void operator()(const ReadyReport&) const { delegate.videoDisplayIsReadyForPlayback(display); }
};

}  // namespace

DisplayObserver::~DisplayObserver() = default;

std::shared_ptr<ObservingDisplay> ObservingDisplay::make(std::shared_ptr<XELVideoDisplay> display,
                                                         std::weak_ptr<DisplayObserver> observer) {
  auto made = std::make_shared<ObservingDisplay>(Token(), std::move(display), std::move(observer));
  made->display_->setDelegate(std::shared_ptr<XELVideoDisplayDelegate>(made, made.get()));
  return made;
}

ObservingDisplay::ObservingDisplay(Token, std::shared_ptr<XELVideoDisplay> display,
                                   std::weak_ptr<DisplayObserver> observer)
    : display_(std::move(display)), observer_(std::move(observer)) {}

ObservingDisplay::~ObservingDisplay() = default;

void ObservingDisplay::loadURL_withSubtitles(const std::string& url,
                                             const std::vector<JSONValue>& subtitles) {
  const auto display = display_;
  const auto observer = observer_.lock();
  if (observer) observer->displayWillLoad(url, subtitles);
  display->loadURL_withSubtitles(url, subtitles);
  if (observer) observer->displayDidLoad();
}

/// Whoever reports holds its delegate, which is this display, meanwhile.
void ObservingDisplay::pass(const DisplayReport& report) {
  const auto observer = observer_.lock();
  if (observer && !observer->displayWillReport(report)) return;
  if (const auto target = delegate()) std::visit(Tell{*target, *this}, report);
  if (observer) observer->displayDidReport(report);
}

void ObservingDisplay::videoDisplay_didReceiveTimedMetadata(XELVideoDisplay&,
                                                            const TimedMetadata& metadata) {
  pass(MetadataReport{metadata});
}

void ObservingDisplay::videoDisplay_didProgressToTime(XELVideoDisplay&, double time) {
  pass(ProgressReport{time});
}

void ObservingDisplay::videoDisplay_didFailWithError(XELVideoDisplay&,
                                                     const std::shared_ptr<const Error>& error) {
  pass(FailureReport{error});
}

void ObservingDisplay::videoDisplayIsReadyForPlayback(XELVideoDisplay&) { pass(ReadyReport{}); }

}  // namespace xel::simulation
