#include "backends/gstreamer/GstItem.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "backends/gstreamer/DownloadOrder.h"
#include "backends/gstreamer/StreamFault.h"
#include "backends/gstreamer/StreamTap.h"

namespace xel {
namespace {

/// Nanoseconds of media that make a stream ready to go on. More would tell of a missing segment
/// long before it matters.
constexpr guint64 enoughBuffered = 5 * GST_SECOND;
/// Seconds in which a server must answer a request for a manifest.
constexpr guint manifestTimeout = 5;
/// Seconds by which the last tags of a stream may lie after its end.
constexpr double endTolerance = 0.5;
/// Seconds. A seek to the end, or beyond it, goes this far before it.
constexpr double leastPlayedAfterSeek = 0.1;
/// Seconds; a year.
constexpr double longestStream = 365.0 * 24 * 3600;
/// Seconds in which a stream that keeps sending must become ready.
constexpr double longestLoad = 30;

constexpr unsigned playVideo = 1U << 0;
constexpr unsigned playAudio = 1U << 1;

std::string_view factoryName(GstElement* element) {
  GstElementFactory* const factory = element ? gst_element_get_factory(element) : nullptr;
  return factory ? GST_OBJECT_NAME(factory) : "";
}

/// Streaming threads: a pipeline builds itself while it reads the stream.
void prepareElement(GstBin*, GstBin*, GstElement* element, gpointer data) {
  const auto& source = *static_cast<std::shared_ptr<StreamSource>*>(data);
  const auto name = factoryName(element);
  if (name == "hlsdemux2") {
    // Reading on, this thread waits for the playlists of the variants.
    letDownloadsFinishFirst();
    source->isHLS = true;
    ++source->arrivals;
    g_object_set(element, "high-watermark-time", enoughBuffered, nullptr);
  } else if (name == "souphttpsrc") {
    g_object_set(element, "timeout", manifestTimeout, nullptr);
  } else if (name == "parsebin") {
    const GstObjectHandle parent(gst_object_get_parent(GST_OBJECT(element)));
    if (!GST_IS_ELEMENT(parent.get()) || factoryName(GST_ELEMENT(parent.get())) != "hlsdemux2") {
      return;
    }
    const GstPadHandle pad(gst_element_get_static_pad(element, "sink"));
    if (pad) StreamTap::attach(*pad, source);
  }
}

/// Pipeline's thread.
void setOutput(GstElement& pipeline, const GstItemSettings& settings) {
  if (settings.output == GstOutput::none) {
    g_object_set(&pipeline, "flags", playVideo | playAudio, nullptr);
  }
  const auto set = [&](const char* property, GstElement* given, const char* nowhere) {
    GstElement* sink = given;
    if (!sink && settings.output == GstOutput::none) {
      sink = gst_element_factory_make(nowhere, nullptr);
      if (sink) g_object_set(sink, "sync", TRUE, nullptr);
    }
    if (sink) g_object_set(&pipeline, property, sink, nullptr);
  };
  set("video-sink", settings.videoSink.get(), "fakevideosink");
  set("audio-sink", settings.audioSink.get(), "fakeaudiosink");
}

}  // namespace

void GstAsset::loadValuesAsynchronously(const std::vector<std::string>&,
                                        std::function<void()> completion) {
  runLoop_->post(std::move(completion));
}

MediaAsset::KeyState GstAsset::stateOfValue(const std::string&) const {
  return {MediaKeyStatus::loaded, nullptr};
}

GstItem::GstItem(std::shared_ptr<GstAsset> asset, std::shared_ptr<const GstItemSettings> settings)
    : asset_(std::move(asset)), settings_(std::move(settings)) {}

void GstItem::start(bool isToPlay, std::function<void()> whenEnded) {
  if (source_) return;
  isToPlay_ = isToPlay;
  whenEnded_ = std::move(whenEnded);
  source_ = std::make_shared<StreamSource>();
  makePipeline();
}

void GstItem::makePipeline() {
  GstElement* const made = gst_element_factory_make("playbin3", nullptr);
  pipeline_.reset(GST_ELEMENT(gst_object_ref_sink(made)));
  g_object_set(made, "uri", asset_->url().c_str(), nullptr);
  g_signal_connect_data(
      made, "deep-element-added", G_CALLBACK(prepareElement),
      new std::shared_ptr<StreamSource>(source_),
      [](gpointer data, GClosure*) { destroy<std::shared_ptr<StreamSource>>(data); },
      static_cast<GConnectFlags>(0));
  watchBus();
  thread_ = std::make_unique<PipelineThread>(GstElementHandle(GST_ELEMENT(gst_object_ref(made))),
                                             settings_->sinkTurn);
  thread_->run([settings = settings_, begun = onMain(&GstItem::handleBegun)](GstElement& pipeline) {
    begun();
    setOutput(pipeline, *settings);
    gst_element_set_state(&pipeline, GST_STATE_PAUSED);
  });
}

template <typename... Values>
std::function<void(Values...)> GstItem::onMain(void (GstItem::*handler)(Values...)) {
  return [item = weak_from_this(), weakLoop = std::weak_ptr(settings_->runLoop),
          handler](Values... values) {
    const auto runLoop = weakLoop.lock();
    if (!runLoop) return;
    runLoop->post([item, handler, values...] {
      const auto self = item.lock();
      if (self && self->isStarted()) ((*self).*handler)(values...);
    });
  };
}

/// What the pipeline's messages lead to on the main thread.
struct GstItem::BusHandlers {
  std::string url;
  std::function<void(std::shared_ptr<const Error>)> error;
  std::function<void()> end;
  std::function<void()> asyncDone;
  std::function<void(int percent)> buffering;
  std::function<void()> latencyChanged;
  std::function<void()> clockLost;

  /// Any thread.
  void handle(GstMessage& message) const {
    gint percent = 100;
    switch (GST_MESSAGE_TYPE(&message)) {
      case GST_MESSAGE_ERROR:
        return error(streamError(message, url));
      case GST_MESSAGE_EOS:
        return end();
      case GST_MESSAGE_ASYNC_DONE:
        return asyncDone();
      case GST_MESSAGE_BUFFERING:
        gst_message_parse_buffering(&message, &percent);
        return buffering(percent);
      case GST_MESSAGE_LATENCY:
        return latencyChanged();
      case GST_MESSAGE_CLOCK_LOST:
        return clockLost();
      default:
        return;
    }
  }
};

void GstItem::watchBus() {
  const auto handle = [](GstBus*, GstMessage* message, gpointer data) {
    static_cast<BusHandlers*>(data)->handle(*message);
    gst_message_unref(message);
    return GST_BUS_DROP;
  };
  const GstBusHandle bus(gst_element_get_bus(pipeline_.get()));
  gst_bus_set_sync_handler(
      bus.get(), handle,
      new BusHandlers{asset_->url(), onMain(&GstItem::handleError), onMain(&GstItem::handleEnd),
                      onMain(&GstItem::handleAsyncDone), onMain(&GstItem::handleBuffering),
                      onMain(&GstItem::handleLatency), onMain(&GstItem::handleClockLost)},
      destroy<BusHandlers>);
}

void GstItem::stop() {
  whenEnded_ = nullptr;
  seekTarget_.reset();
  nextSeek_.reset();
  pipeline_.reset();
  thread_.reset();
}

void GstItem::setToPlay(bool isToPlay) {
  if (isToPlay && !isToPlay_) isWatchToRestart_ = true;
  isToPlay_ = isToPlay;
  applyState();
}

void GstItem::applyState() {
  const bool isPlaying = isToPlay_ && !isBuffering_ && status_ == MediaItemStatus::readyToPlay;
  if (!isStarted() || isPlaying == isPlaying_) return;
  isPlaying_ = isPlaying;
  thread_->run([state = isPlaying ? GST_STATE_PLAYING : GST_STATE_PAUSED](GstElement& pipeline) {
    gst_element_set_state(&pipeline, state);
  });
}

void GstItem::seek(double seconds) {
  if (!isStarted()) return;
  // At the very end, or beyond it, the demuxer would begin anew.
  const double end = duration_ ? std::max(0.0, *duration_ - leastPlayedAfterSeek) : longestStream;
  const double target = std::min(std::max(0.0, seconds), end);
  if (status_ == MediaItemStatus::readyToPlay && !seekTarget_) {
    nextSeek_.reset();
    startSeek(target);
  } else {
    nextSeek_ = target;
  }
}

void GstItem::startSeek(double seconds) {
  seekTarget_ = lastPosition_ = seconds;
  isSeekIssued_ = false;
  isEnded_ = false;
  isWatchToRestart_ = true;
  const auto target = static_cast<gint64>(seconds * GST_SECOND);
  thread_->run([target, issued = onMain(&GstItem::handleSeekIssued)](GstElement& pipeline) {
    constexpr int flags = GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE;
    issued(gst_element_seek_simple(&pipeline, GST_FORMAT_TIME, static_cast<GstSeekFlags>(flags),
                                   target) != FALSE);
  });
}

void GstItem::handleSeekIssued(bool isAccepted) {
  isSeekIssued_ = true;
  if (!isAccepted) lastPosition_ = queryPosition().value_or(lastPosition_);
  finishSeekIfDone();
}

void GstItem::finishSeekIfDone() {
  if (!seekTarget_ || !isSeekIssued_) return;
  if (gst_element_get_state(pipeline_.get(), nullptr, nullptr, 0) == GST_STATE_CHANGE_ASYNC) return;
  finishSeek();
}

void GstItem::finishSeek() {
  seekTarget_.reset();
  ++jumps_;
  isWatchToRestart_ = true;
  if (nextSeek_) startSeek(*std::exchange(nextSeek_, std::nullopt));
}

void GstItem::handleAsyncDone() {
  isPrerolled_ = true;
  finishSeekIfDone();
  becomeReadyIfLoaded();
}

void GstItem::handleLatency() {
  thread_->run([](GstElement& pipeline) { gst_bin_recalculate_latency(GST_BIN(&pipeline)); });
}

void GstItem::handleClockLost() {
  if (!isPlaying_) return;
  thread_->run([](GstElement& pipeline) {
    gst_element_set_state(&pipeline, GST_STATE_PAUSED);
    gst_element_set_state(&pipeline, GST_STATE_PLAYING);
  });
}

void GstItem::handleBuffering(int percent) {
  isBuffering_ = percent < 100;
  applyState();
}

void GstItem::becomeReadyIfLoaded() {
  if (status_ != MediaItemStatus::unknown || !isPrerolled_) return;
  if (!source_->isHLS) {
    return fail(streamError(GstPlayerError::notAStream, asset_->url(),
                            "what the server sent is no HLS playlist"));
  }
  if (!queryPosition()) return;
  isWatchToRestart_ = true;
  setStatus(MediaItemStatus::readyToPlay);
  if (!isStarted()) return;
  applyState();
  if (nextSeek_ && !seekTarget_) startSeek(*std::exchange(nextSeek_, std::nullopt));
  // Last, since the answer can take as long as a server hangs.
  askDuration();
}

void GstItem::askDuration() {
  thread_->run([tell = onMain(&GstItem::handleDuration)](GstElement& pipeline) {
    gint64 duration = 0;
    if (gst_element_query_duration(&pipeline, GST_FORMAT_TIME, &duration) != FALSE &&
        duration > 0) {
      tell(static_cast<double>(duration) / GST_SECOND);
    }
  });
}

void GstItem::handleEnd() {
  // An end from before a seek comes before the seek is told to be issued.
  if (isEnded_ || (seekTarget_ && !isSeekIssued_)) return;
  if (seekTarget_) finishSeek();
  if (seekTarget_) return;
  if (pendingError_) return fail(std::exchange(pendingError_, nullptr));
  isEnded_ = true;
  lastPosition_ = queryPosition().value_or(lastPosition_);
  deliverTagsUntil(lastPosition_ + endTolerance);
  // The item may be stopped meanwhile.
  if (const auto whenEnded = whenEnded_; whenEnded && isEnded_) whenEnded();
}

void GstItem::handleError(std::shared_ptr<const Error> error) {
  if (source_->arrivals == 0) return fail(std::move(error));
  if (!pendingError_) pendingError_ = std::move(error);
}

void GstItem::fail(std::shared_ptr<const Error> error) {
  error_ = std::move(error);
  stop();
  setStatus(MediaItemStatus::failed);
}

void GstItem::setStatus(MediaItemStatus status) {
  status_ = status;
  reportChange(kMediaItemStatus, {status});
}

double GstItem::position() const {
  if (nextSeek_) return *nextSeek_;
  if (seekTarget_) return *seekTarget_;
  return queryPosition().value_or(lastPosition_);
}

std::optional<double> GstItem::queryPosition() const {
  gint64 position = 0;
  if (!pipeline_ || !isPrerolled_ ||
      gst_element_query_position(pipeline_.get(), GST_FORMAT_TIME, &position) == FALSE) {
    return std::nullopt;
  }
  return static_cast<double>(position) / GST_SECOND;
}

bool GstItem::isActive() const noexcept {
  if (!isStarted() || isEnded_) return false;
  return isToPlay_ || seekTarget_ || status_ == MediaItemStatus::unknown;
}

void GstItem::follow(double now) {
  if (!isStarted()) return;
  finishSeekIfDone();
  becomeReadyIfLoaded();
  if (!isStarted()) return;
  const auto position = seekTarget_ ? std::nullopt : queryPosition();
  if (std::exchange(isWatchToRestart_, false)) watch_.restart(now);
  watch_.see(now, position.value_or(std::numeric_limits<double>::quiet_NaN()), source_->arrivals);
  if (position && status_ == MediaItemStatus::readyToPlay) {
    lastPosition_ = *position;
    deliverTagsUntil(*position);
  }
  if (!begunAt_) begunAt_ = now;
  judgeStandstill(now);
}

void GstItem::deliverTagsUntil(double position) {
  for (TimedTag& tag : source_->tags.takeUntil(position)) {
    const auto now = std::make_shared<const std::vector<MediaMetadataItem>>(std::move(tag.items));
    const auto earlier = std::exchange(metadata_, now);
    reportChange(kMediaItemTimedMetadata, {status_, earlier, now});
    if (!isStarted() || seekTarget_) return;
  }
}

void GstItem::judgeStandstill(double now) {
  if (!isActive()) return;
  if (pendingError_ && watch_.isStandingStill()) return fail(std::exchange(pendingError_, nullptr));
  const auto giveUp = [this](const char* cause) {
    fail(streamError(GstPlayerError::timedOut, asset_->url(), cause));
  };
  if (status_ == MediaItemStatus::readyToPlay) {
    if (watch_.isSilentFor(StallWatch::longestSilence)) giveUp("the server stopped sending media");
  } else if (watch_.isSilentFor(StallWatch::longestSilenceAtStart)) {
    giveUp("the server stopped answering");
  } else if (now - begunAt_.value_or(now) >= longestLoad) {
    giveUp("nothing that can be played has come");
  }
}

}  // namespace xel
