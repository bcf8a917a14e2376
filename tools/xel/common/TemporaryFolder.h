#pragma once

#include <filesystem>

namespace xel {

/// A fresh folder that only this user can read; removed, with what is in it, at the end.
class TemporaryFolder {
 public:
  /// Throws std::system_error when no folder can be made.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace xel
