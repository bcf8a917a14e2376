#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "common/Progress.h"

namespace xel {
namespace {

/// What the progress of two steps writes to a pseudo-terminal.
std::string shownOnTerminal() {
  const int host = posix_openpt(O_RDWR | O_NOCTTY);
  EXPECT_TRUE(host >= 0 && grantpt(host) == 0 && unlockpt(host) == 0);
  std::FILE* const terminal = std::fopen(ptsname(host), "r+");
  {
    Progress progress("reading\x1B[31m traces", terminal);
    progress.show(0, 0);
    progress.show(2, 2);
  }
  // Once its other side is closed, the host's reads end with an error behind the last byte.
  std::fclose(terminal);
  std::string shown;
  std::array<char, 200> text = {};
  for (ssize_t size; (size = read(host, text.data(), text.size())) > 0;) {
    shown.append(text.data(), static_cast<std::size_t>(size));
  }
  close(host);
  return shown;
}

TEST(Progress, IsOneLineOnATerminalAndNothingElsewhere) {
  setenv("TERM", "xterm", 1);
  const std::string erase = "\r\x1B[K";
  EXPECT_EQ(shownOnTerminal(),
            erase + "reading?[31m traces: 0" + erase + "reading?[31m traces: 2 of 2" + erase);

  std::FILE* const file = std::tmpfile();
  Progress("reading", file).show(1, 2);
  EXPECT_EQ(std::ftell(file), 0);
  std::fclose(file);
}

}  // namespace
}  // namespace xel
