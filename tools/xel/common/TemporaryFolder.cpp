#include "common/TemporaryFolder.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <stdlib.h>

namespace xel {

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "xel-serve-XXXXXX").string();
  if (!mkdtemp(name.data())) {
    throw std::system_error(errno, std::generic_category(), "no temporary folder can be made");
  }
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace xel
