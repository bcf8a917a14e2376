#include "backends/gstreamer/DownloadOrder.h"

#include <sched.h>

namespace xel {

void letDownloadsFinishFirst() noexcept {
  const sched_param unused = {};
  sched_setscheduler(0, SCHED_BATCH, &unused);
}

}  // namespace xel
