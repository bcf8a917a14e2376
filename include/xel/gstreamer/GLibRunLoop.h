#pragma once

#include <memory>

#include "xel/platform/Export.h"
#include "xel/platform/RunLoop.h"

namespace xel {

/// A run loop over GLib's: for hosts whose main loop is a `GMainLoop`, a `GtkApplication` or
/// another that runs the calling thread's default main context.
///
/// The thread that calls this is the main thread. Timers keep an absolute schedule, which
/// `g_timeout_add` does not. When the loop is let go of, what is still posted is released unrun.
XEL_EXPORT std::shared_ptr<RunLoop> makeGLibRunLoop();

}  // namespace xel
