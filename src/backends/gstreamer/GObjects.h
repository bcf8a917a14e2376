#pragma once

#include <memory>

#include <gst/gst.h>

namespace xel {

/// Owns one reference, or one allocation, of GLib's or GStreamer's.
template <auto release>
struct Releaser {
  template <typename T>
  void operator()(T* object) const {
    release(object);
  }
};

using GMainContextHandle = std::unique_ptr<GMainContext, Releaser<g_main_context_unref>>;
using GSourceHandle = std::unique_ptr<GSource, Releaser<g_source_unref>>;
using GErrorHandle = std::unique_ptr<GError, Releaser<g_error_free>>;
using GTextHandle = std::unique_ptr<gchar, Releaser<g_free>>;
using GstElementHandle = std::unique_ptr<GstElement, Releaser<gst_object_unref>>;
using GstPadHandle = std::unique_ptr<GstPad, Releaser<gst_object_unref>>;
using GstBusHandle = std::unique_ptr<GstBus, Releaser<gst_object_unref>>;
using GstObjectHandle = std::unique_ptr<GstObject, Releaser<gst_object_unref>>;

/// For GLib's destroy notifications of data that is a `T` made by `new`.
template <typename T>
void destroy(gpointer data) {
  delete static_cast<T*>(data);
}

}  // namespace xel
