#include "serve/ChildProcess.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace xel::serve {
namespace {

constexpr std::size_t longestErrors = 2000;

/// What is written to a pipe until its end.
std::string readAll(int pipe) {
  std::string text;
  std::array<char, 4096> piece;
  for (ssize_t size = 0; (size = ::read(pipe, piece.data(), piece.size())) != 0;) {
    if (size < 0 && errno != EINTR) break;
    if (size > 0) text.append(piece.data(), static_cast<std::size_t>(size));
  }
  if (text.size() > longestErrors) text.erase(0, text.size() - longestErrors);
  return text;
}

}  // namespace

ChildResult runChild(const std::vector<std::string>& words) {
  std::array<int, 2> pipe;
  if (pipe2(pipe.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe can be made");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, pipe[1], STDERR_FILENO);
  // Signals that this process waits for elsewhere are the child's own again.
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);

  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t child = 0;
  const int fault =
      posix_spawnp(&child, arguments[0], &actions, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  close(pipe[1]);
  ChildResult result;
  if (fault == 0) result.errors = readAll(pipe[0]);
  close(pipe[0]);
  if (fault == ENOENT) return {commandNotFound, {}};
  if (fault != 0) throw std::runtime_error("no process can be made for " + words[0]);

  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

}  // namespace xel::serve
