#include "play/KeyReader.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace xel {

KeyReader::KeyReader(int terminal, std::shared_ptr<RunLoop> runLoop,
                     std::function<void(Key)> handler)
    : terminal_(terminal),
      runLoop_(std::move(runLoop)),
      handler_(std::move(handler)),
      mode_(terminal),
      ending_(eventfd(0, EFD_CLOEXEC)) {
  if (ending_ < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
  resume();
}

KeyReader::~KeyReader() {
  suspend();
  close(ending_);
}

void KeyReader::suspend() {
  if (thread_.joinable()) {
    eventfd_write(ending_, 1);
    thread_.join();
    eventfd_t written = 0;
    eventfd_read(ending_, &written);
  }
  mode_.leave();
}

void KeyReader::resume() {
  suspend();
  if (mode_.enter()) thread_ = std::thread([this] { readKeys(); });
}

void KeyReader::readKeys() {
  KeyDecoder decoder;
  std::array<pollfd, 2> waited = {{{terminal_, POLLIN, 0}, {ending_, POLLIN, 0}}};
  for (;;) {
    if (poll(waited.data(), waited.size(), -1) < 0) {
      if (errno == EINTR) continue;
      return;
    }
    if (waited[1].revents != 0) return;
    std::array<char, 64> bytes;
    const auto count = read(terminal_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    for (const auto key : decoder.decode({bytes.data(), static_cast<std::size_t>(count)})) {
      runLoop_->post([handler = handler_, key] { handler(key); });
    }
  }
}

}  // namespace xel
