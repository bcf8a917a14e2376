#include "backends/gstreamer/StreamTap.h"

#include <utility>

#include "backends/gstreamer/DownloadOrder.h"
#include "backends/gstreamer/GObjects.h"
#include "backends/gstreamer/StreamSource.h"

namespace xel {
namespace {

/// Seconds by which a tag may lie before the place that is played from.
constexpr double tolerance = 0.001;

double toSeconds(guint64 time) { return static_cast<double>(time) / GST_SECOND; }

}  // namespace

void StreamTap::attach(GstPad& pad, std::shared_ptr<StreamSource> source) {
  const int what = GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST |
                   GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH;
  gst_pad_add_probe(&pad, static_cast<GstPadProbeType>(what), see, new StreamTap(std::move(source)),
                    destroy<StreamTap>);
}

GstPadProbeReturn StreamTap::see(GstPad*, GstPadProbeInfo* info, gpointer data) {
  auto& tap = *static_cast<StreamTap*>(data);
  const int type = GST_PAD_PROBE_INFO_TYPE(info);
  if ((type & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
    tap.takeBuffer(*GST_PAD_PROBE_INFO_BUFFER(info));
  } else if ((type & GST_PAD_PROBE_TYPE_BUFFER_LIST) != 0) {
    GstBufferList* const list = GST_PAD_PROBE_INFO_BUFFER_LIST(info);
    for (guint i = 0; i < gst_buffer_list_length(list); ++i) {
      tap.takeBuffer(*gst_buffer_list_get(list, i));
    }
  } else {
    tap.takeEvent(*GST_PAD_PROBE_INFO_EVENT(info));
  }
  return GST_PAD_PROBE_OK;
}

void StreamTap::takeEvent(GstEvent& event) {
  if (GST_EVENT_TYPE(&event) == GST_EVENT_FLUSH_STOP) {
    source_->tags.clear();
  } else if (GST_EVENT_TYPE(&event) == GST_EVENT_SEGMENT) {
    gst_event_copy_segment(&event, &segment_);
    const guint64 start = gst_segment_to_stream_time(&segment_, GST_FORMAT_TIME, segment_.start);
    floor_ = GST_CLOCK_TIME_IS_VALID(start) ? toSeconds(start) : 0;
  }
}

void StreamTap::takeBuffer(GstBuffer& buffer) {
  if (!std::exchange(hasSeenBuffer_, true)) letDownloadsFinishFirst();
  ++source_->arrivals;
  // The HLS demuxer sets a time only where the media's own clock may have jumped.
  if (GST_BUFFER_PTS_IS_VALID(&buffer)) {
    guint64 time = 0;
    const int sign =
        gst_segment_to_stream_time_full(&segment_, GST_FORMAT_TIME, GST_BUFFER_PTS(&buffer), &time);
    if (sign != 0) reader_.beginRun(sign * toSeconds(time));
  }
  GstMapInfo map;
  if (gst_buffer_map(&buffer, &map, GST_MAP_READ) == FALSE) return;
  reader_.read(std::as_bytes(std::span(map.data, map.size)), [this](TimedTag tag) {
    if (tag.time >= floor_ - tolerance) source_->tags.add(std::move(tag));
  });
  gst_buffer_unmap(&buffer, &map);
}

}  // namespace xel
