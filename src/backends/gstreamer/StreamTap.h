#pragma once

#include <memory>

#include <gst/gst.h>

#include "backends/gstreamer/TimedTagReader.h"

namespace xel {

struct StreamSource;

/// Reads along where a stream's segments enter their demuxer, which drops the tags in them.
///
/// Threads: made on any; then the pad's streaming thread.
class StreamTap {
 public:
  /// Reads what passes the pad until the pad is gone.
  static void attach(GstPad& pad, std::shared_ptr<StreamSource> source);

 private:
  explicit StreamTap(std::shared_ptr<StreamSource> source) : source_(std::move(source)) {
    gst_segment_init(&segment_, GST_FORMAT_TIME);
  }
  static GstPadProbeReturn see(GstPad* pad, GstPadProbeInfo* info, gpointer data);
  void takeEvent(GstEvent& event);
  void takeBuffer(GstBuffer& buffer);

  const std::shared_ptr<StreamSource> source_;
  TimedTagReader reader_;
  GstSegment segment_;
  /// Seconds of stream time at which what is read now is to be played from.
  double floor_ = 0;
  bool hasSeenBuffer_ = false;
};

}  // namespace xel
