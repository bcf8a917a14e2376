#include <algorithm>
#include <fstream>
#include <iterator>

#include <sys/utsname.h>

#include "backends/linux/LinuxEnvironment.h"

namespace xel {
namespace {

constexpr std::string_view blanks = " \t\r\n";

/// The text without blanks at its ends, and up to the NUL that ends device tree values.
std::optional<std::string> meaningful(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  const auto begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return std::nullopt;
  return std::string(text.substr(begin, text.find_last_not_of(blanks) - begin + 1));
}

std::optional<std::string> readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/// A value of os-release(5), which is quoted as in a shell.
std::string unquoted(std::string_view value) {
  std::string text;
  char quote = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == quote) {
      quote = 0;
    } else if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
    } else if (c == '\\' && quote != '\'' && i + 1 < value.size()) {
      text += value[++i];
    } else {
      text += c;
    }
  }
  return text;
}

std::optional<std::string> assignment(std::string_view file, std::string_view name) {
  std::optional<std::string> value;
  while (!file.empty()) {
    std::string_view line = file.substr(0, file.find('\n'));
    file.remove_prefix(std::min(line.size() + 1, file.size()));
    line = line.substr(0, line.find_last_not_of(blanks) + 1);
    if (line.starts_with(name) && line.substr(name.size()).starts_with('=')) {
      value = meaningful(unquoted(line.substr(name.size() + 1)));
    }
  }
  return value;
}

}  // namespace

SystemFacts SystemFacts::read(const std::filesystem::path& root) {
  SystemFacts facts;
  utsname kernel{};
  const bool named = uname(&kernel) == 0;

  auto release = readFile(root / "etc/os-release");
  if (!release) release = readFile(root / "usr/lib/os-release");
  if (release) {
    facts.operatingSystemName = assignment(*release, "ID").value_or("linux");
    facts.operatingSystemVersion = assignment(*release, "VERSION_ID");
  } else if (named) {
    facts.operatingSystemName = meaningful(kernel.sysname);
    facts.operatingSystemVersion = meaningful(kernel.release);
  }

  for (const char* path : {"proc/device-tree/model", "sys/class/dmi/id/product_name"}) {
    if (const auto model = readFile(root / path)) facts.hardwareModel = meaningful(*model);
    if (facts.hardwareModel) return facts;
  }
  if (named) facts.hardwareModel = meaningful(kernel.machine);
  return facts;
}

}  // namespace xel
