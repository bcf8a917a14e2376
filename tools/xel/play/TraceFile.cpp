#include "play/TraceFile.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "common/PrintableText.h"

namespace xel {

TraceFile::TraceFile(std::string path)
    : path_(std::move(path)), file_(std::fopen(path_.c_str(), "wb")) {
  if (!file_) giveUp();
}

void TraceFile::write(std::string_view line) {
  if (!file_) return;
  if (std::fwrite(line.data(), 1, line.size(), file_.get()) != line.size() ||
      std::fflush(file_.get()) != 0) {
    giveUp();
  }
}

void TraceFile::giveUp() {
  std::fprintf(stderr, "xel: the session is not recorded: %s: %s\n", printable(path_).c_str(),
               std::strerror(errno));
  file_ = nullptr;
}

}  // namespace xel
