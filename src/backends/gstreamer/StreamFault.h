#pragma once

#include <memory>
#include <string>

#include <gst/gst.h>

#include "xel/gstreamer/GstMediaPlayer.h"
#include "xel/platform/Error.h"

namespace xel {

/// An error that names the stream and what is wrong with it.
std::shared_ptr<const Error> streamError(GstPlayerError code, const std::string& url,
                                         const std::string& cause);

/// What an error message of a pipeline tells, as an error of the stream. Threads: any.
std::shared_ptr<const Error> streamError(GstMessage& message, const std::string& url);

}  // namespace xel
