#include "document/GivenDocument.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace xel {

GivenDocument GivenDocument::read(const std::string& file) {
  std::ifstream stream;
  const bool isStandardInput = file == "-";
  if (!isStandardInput) stream.open(file, std::ios::binary);
  std::ostringstream read;
  std::streambuf* const source = isStandardInput ? std::cin.rdbuf() : stream.rdbuf();
  read << source;
  if (!isStandardInput &&
      (!stream.is_open() || read.bad() || std::filesystem::is_directory(file))) {
    throw std::runtime_error(file + " cannot be read");
  }
  const std::string name = isStandardInput ? "standard input" : file;
  std::string text = read.str();
  const auto [value, error] = JSONValue::parse(text);
  if (error) throw std::runtime_error(name + " is not JSON: " + error->description);
  if (!value.isObject()) throw std::runtime_error(name + " is not a JSON object");
  return {std::move(text), value};
}

}  // namespace xel
