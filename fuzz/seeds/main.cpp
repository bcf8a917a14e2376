// Writes the first inputs of the fuzzers into FOLDER/TARGET.
//
//   xel_fuzz_seeds FOLDER

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "xel/simulation/VastBuilder.h"

namespace {

using xel::simulation::VastBuilder;

/// The folder of one target.
class Corpus {
 public:
  Corpus(const std::filesystem::path& folder, const char* target) : folder_(folder / target) {
    std::filesystem::create_directories(folder_);
  }
  /// @param numbers what the target reads from the end of its input.
  void add(const std::string& bytes, const std::string& numbers = "") {
    std::ofstream file(folder_ / ("seed-" + std::to_string(++count_)), std::ios::binary);
    file << bytes << numbers;
    file.close();
    if (!file) throw std::filesystem::filesystem_error("cannot write", folder_, {});
  }

 private:
  const std::filesystem::path folder_;
  int count_ = 0;
};

void addVast(Corpus corpus) {
  const std::string cut = "\x90\x01";
  const std::string typical = VastBuilder::typical("ad").build();
  corpus.add(typical, cut);
  corpus.add(VastBuilder().ad("id").creative("c", 1).universalAdId("r", "v").build(), cut);
  corpus.add(VastBuilder::typical("a").ad().companion(-1, 300, "u", "api").build(), cut);
  corpus.add(
      "<!DOCTYPE VAST [<!ENTITY e \"x\">]><VAST><Ad id=\"&e;\"><Creatives><Creative>"
      "<UniversalAdId idRegistry='r'> v "
      "</UniversalAdId><Linear/></Creative></Creatives></Ad></VAST>",
      cut);
}

/// Any bytes are a script.
void addSessions(Corpus corpus) {
  std::mt19937 random;
  for (int script = 0; script < 40; ++script) {
    std::string bytes;
    for (int left = 50 * (1 + script % 20); left > 0; --left) bytes += static_cast<char>(random());
    corpus.add(bytes);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: xel_fuzz_seeds FOLDER\n", stderr);
    return 2;
  }
  try {
    const std::filesystem::path folder = argv[1];
    addSessions({folder, "session"});
    addVast({folder, "vast"});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "xel_fuzz_seeds: %s\n", error.what());
    return 1;
  }
}
