#pragma once

#include <filesystem>

namespace xel::serve {

/// Keeps other processes that lock the same file waiting for as long as it lives. The file is made
/// if need be, and stays.
class FileLock {
 public:
  /// Waits. Throws std::system_error when the file cannot be locked.
  explicit FileLock(const std::filesystem::path& file);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

 private:
  int file_;
};

}  // namespace xel::serve
