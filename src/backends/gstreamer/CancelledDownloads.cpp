#include "backends/gstreamer/CancelledDownloads.h"

#include <mutex>

#include <gio/gio.h>

namespace xel {
namespace {

using CloseStream = gboolean (*)(GInputStream*, GCancellable*, GError**);

CloseStream closeStream = nullptr;

GQuark finishedMark() { return g_quark_from_static_string("xel-message-finished"); }

gboolean markFinished(GSignalInvocationHint*, guint, const GValue* values, gpointer) {
  g_object_set_qdata(G_OBJECT(g_value_get_object(values)), finishedMark(), GINT_TO_POINTER(1));
  return TRUE;
}

gboolean closeUnlessFinished(GInputStream* stream, GCancellable* cancellable, GError** error) {
  GObject* message = nullptr;
  g_object_get(stream, "message", &message, nullptr);
  const auto isFinished = message && g_object_get_qdata(message, finishedMark());
  if (message) g_object_unref(message);
  return isFinished ? TRUE : closeStream(stream, cancellable, error);
}

/// False before the first answer, when there is no such class yet.
bool guardClass() {
  const auto message = g_type_from_name("SoupMessage");
  const auto stream = g_type_from_name("SoupClientInputStream");
  const auto finished = message ? g_signal_lookup("finished", message) : 0;
  if (!finished || !g_type_is_a(stream, G_TYPE_INPUT_STREAM)) return false;
  auto* streamClass = static_cast<GInputStreamClass*>(g_type_class_ref(stream));
  if (!g_object_class_find_property(G_OBJECT_CLASS(streamClass), "message")) return true;
  g_signal_add_emission_hook(finished, 0, markFinished, nullptr, nullptr);
  closeStream = streamClass->close_fn;
  streamClass->close_fn = closeUnlessFinished;
  return true;
}

}  // namespace

void guardCancelledDownloads() noexcept {
  static std::mutex mutex;
  static bool isGuarded = false;
  const std::lock_guard lock(mutex);
  isGuarded = isGuarded || guardClass();
}

}  // namespace xel
