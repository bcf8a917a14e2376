#include "serve/FileLock.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace xel::serve {
namespace {

[[noreturn]] void fail(int reason, const std::filesystem::path& file) {
  throw std::system_error(reason, std::generic_category(), file.string() + " cannot be locked");
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& file)
    : file_(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
  if (file_ < 0) fail(errno, file);
  while (flock(file_, LOCK_EX) != 0) {
    const int reason = errno;
    if (reason == EINTR) continue;
    close(file_);
    fail(reason, file);
  }
}

FileLock::~FileLock() { close(file_); }

}  // namespace xel::serve
