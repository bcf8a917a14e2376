#include "backends/gstreamer/StreamFault.h"

#include <string_view>

#include "backends/gstreamer/GObjects.h"

namespace xel {
namespace {

/// What a debug text adds to its message: it follows the place in GStreamer's sources, if one is
/// told.
std::string_view addition(std::string_view debug) {
  const auto placeEnd = debug.find('\n');
  if (placeEnd != std::string_view::npos) debug.remove_prefix(placeEnd + 1);
  return debug.starts_with("../") ? std::string_view() : debug;
}

bool isFromSource(GstMessage& message) {
  GstElementFactory* const factory =
      GST_IS_ELEMENT(GST_MESSAGE_SRC(&message))
          ? gst_element_get_factory(GST_ELEMENT(GST_MESSAGE_SRC(&message)))
          : nullptr;
  return factory && std::string_view(GST_OBJECT_NAME(factory)) == "souphttpsrc";
}

std::string causeOf(GstMessage& message, const GError& error, std::string_view debug) {
  const GstStructure* details = nullptr;
  gst_message_parse_error_details(&message, &details);
  guint status = 0;
  if (details && gst_structure_get_uint(details, "http-status-code", &status) != FALSE) {
    return std::string(error.message) + " (HTTP status " + std::to_string(status) + ")";
  }
  // All that a source tells when it gets no answer.
  if (isFromSource(message) && error.domain == GST_STREAM_ERROR) {
    return "the server cannot be reached, is not trusted, or stopped answering";
  }
  const auto added = addition(debug);
  return added.empty() ? error.message
                       : std::string(error.message) + " (" + std::string(added) + ")";
}

}  // namespace

std::shared_ptr<const Error> streamError(GstPlayerError code, const std::string& url,
                                         const std::string& cause) {
  return std::make_shared<const Error>(Error{std::string(gstPlayerErrorDomain),
                                             static_cast<std::int64_t>(code),
                                             "Cannot play " + url + ": " + cause, nullptr});
}

std::shared_ptr<const Error> streamError(GstMessage& message, const std::string& url) {
  GError* error = nullptr;
  gchar* debug = nullptr;
  gst_message_parse_error(&message, &error, &debug);
  const GErrorHandle errorHandle(error);
  const GTextHandle debugHandle(debug);

  const bool isMissing =
      g_error_matches(error, GST_CORE_ERROR, GST_CORE_ERROR_MISSING_PLUGIN) != FALSE ||
      g_error_matches(error, GST_STREAM_ERROR, GST_STREAM_ERROR_CODEC_NOT_FOUND) != FALSE;
  return streamError(isMissing ? GstPlayerError::unavailable : GstPlayerError::failed, url,
                     causeOf(message, *error, debug ? debug : ""));
}

}  // namespace xel
