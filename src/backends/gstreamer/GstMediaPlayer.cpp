#include "xel/gstreamer/GstMediaPlayer.h"

#include <utility>
#include <vector>

#include "xel/platform/Platform.h"

#include "backends/gstreamer/GObjects.h"
#include "backends/gstreamer/GstItem.h"
#include "backends/gstreamer/GstPlayer.h"
#include "backends/gstreamer/TrustedAuthorities.h"

namespace xel {
namespace {

struct Part {
  const char* element;
  const char* package;
};

/// The element that is missing, and where it is to be had; empty when none is.
std::string missingPart(GstOutput output) {
  std::vector<Part> parts = {{"playbin3", "gstreamer1.0-plugins-base"},
                             {"hlsdemux2", "gstreamer1.0-plugins-good"},
                             {"souphttpsrc", "gstreamer1.0-plugins-good"},
                             {"tsdemux", "gstreamer1.0-plugins-bad"}};
  if (output == GstOutput::none) {
    parts.push_back({"fakevideosink", "gstreamer1.0-plugins-bad"});
    parts.push_back({"fakeaudiosink", "gstreamer1.0-plugins-bad"});
  }
  for (const auto& [element, package] : parts) {
    GstElementFactory* const factory = gst_element_factory_find(element);
    if (!factory) return std::string(element) + "; on Debian it is in " + package;
    gst_object_unref(factory);
  }
  return {};
}

GstElementHandle referenceTo(GstElement* element) {
  return GstElementHandle(element ? GST_ELEMENT(gst_object_ref_sink(element)) : nullptr);
}

}  // namespace

std::shared_ptr<GstMediaPlayer> makeGstMediaPlayer(const GstMediaPlayerOptions& options) {
  const auto log = Platform::current().log;
  GError* error = nullptr;
  if (gst_init_check(nullptr, nullptr, &error) == FALSE) {
    const GErrorHandle held(error);
    log->line(std::string("GStreamer cannot be started: ") +
              (error ? error->message : "no reason"));
    return nullptr;
  }
  if (const std::string missing = missingPart(options.output); !missing.empty()) {
    log->line("GStreamer lacks the element " + missing);
    return nullptr;
  }
  if (!options.caFile.empty()) {
    if (const auto fault = trustAuthoritiesOf(options.caFile)) {
      log->line("The certificate authorities of " + options.caFile + " cannot be read: " + *fault);
      return nullptr;
    }
  }
  const auto settings = std::make_shared<GstItemSettings>();
  settings->output = options.output;
  settings->videoSink = referenceTo(options.videoSink);
  settings->audioSink = referenceTo(options.audioSink);
  if (options.videoSink || options.audioSink) settings->sinkTurn = std::make_shared<std::mutex>();
  settings->runLoop = options.mainRunLoop ? options.mainRunLoop : Platform::current().mainRunLoop;
  return std::make_shared<GstPlayer>(settings);
}

}  // namespace xel
