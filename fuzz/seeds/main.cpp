// Writes the first inputs of the fuzzers into FOLDER/TARGET. TRACES is a folder of recorded traces.
//
//   xel_fuzz_seeds FOLDER TRACES

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <utility>

#include "xel/platform/Platform.h"
#include "xel/simulation/StreamInfoBuilder.h"
#include "xel/simulation/StreamInitAnswerBuilder.h"
#include "xel/simulation/VastBuilder.h"

#include "support/TaggedStreams.h"

namespace {

using namespace xel::simulation;

/// The bytes that a target reads back as this text, whose length is not given.
std::string text(const std::string& text) {
  std::string bytes;
  for (const char c : text) bytes += c == '\\' ? std::string("\\\\") : std::string(1, c);
  return bytes + "\\.";
}

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

/// Texts, and what RandomXML makes of numbers.
void addXML(Corpus corpus) {
  corpus.add(VastBuilder::typical("ad").build(), "\2");
  corpus.add("<!DOCTYPE r><a b='1&#38;'>t&amp;<![CDATA[ ]]><!-- c --><?p i?></a>", "\2");
  for (const char* differing :
       {"<?xml version=\"2.0\"?><a/>", "<!DOCTYPE r [<!ATTLIST a b CDATA 'd'>]><a/>",
        "<!DOCTYPE r [<!ENTITY e 'x'>]><a>&e;</a>", "<\xF0\x90\x80\x80/>"}) {
    corpus.add(differing, "\2");
  }
  std::mt19937 random;
  for (int document = 0; document < 20; ++document) {
    std::string bytes;
    for (int left = 400; left > 0; --left) bytes += static_cast<char>(random());
    corpus.add(bytes, document % 2 ? "\1" : std::string(1, '\0'));
  }
}

void addDocuments(Corpus corpus) {
  const std::string time(9, '\x40');
  for (auto builder : {StreamInfoBuilder::vod(), StreamInfoBuilder::live()}) {
    corpus.add(builder.build(), time);
    builder.addAd("a", 4, VastBuilder().ad("id").impression("https://t.example/i").build());
    corpus.add(builder.build(), time);
    builder.addBreak("pre", 0).addAd("b", 0.5).addBreak("mid", 20.5).addAd("c", 10).addAd("d", 5);
    corpus.add(builder.build(), time);
  }
  corpus.add(R"({"cuepoints":[{"start":30,"end":60},{"start":0},{"start":9,"end":4}]})", time);
}

void addAnswers(Corpus corpus) {
  for (auto answer : {StreamInitAnswerBuilder::vod(), StreamInitAnswerBuilder::live()}) {
    answer.subtitles = {{"en", "https://media.example/en.vtt", "https://media.example/en.ttml"}};
    corpus.add(text("") + answer.build(), "\1\1");
    answer.manifest = "https://media.example/main.m3u8?a=1&b=%20&c#f";
    answer.prerollManifest = "https://media.example/preroll.m3u8";
    corpus.add(text(" ?a=2&d=[x]\n") + answer.build(), "\1\1");
  }
}

void addPings(Corpus corpus) {
  const std::string domain = xel::Services().measurementDomains[0];
  for (const char* tail :
       {"/pcs/view?xai=1&sig=2&sdkv=old&flag", "/pagead/adview?ai=1&sigh=2&a=b=c",
        "/pagead/conversion/?ai=&sigh=#f", "/kolpad/live/conversion?ai=%20&sigh=[SDKV]",
        "/?u=[CACHEBUSTING]&v=[SDKV]", ":8443/[SDKV]"}) {
    corpus.add(text("https://" + domain + tail) + text("POST") + text("X-Name") + text("value"),
               "start\xFF\xFF");
  }
}

void addTaggedStreams(Corpus corpus) {
  using namespace xel::test;
  const std::string tags = xel::test::text("a") + xel::test::text("b");
  const std::string sizes("\0\0\x10\0\x40\0\x09\0\x02", 9);
  const std::string transport = Stream()
                                    .tables({tagPID, otherTagPID})
                                    .audio(5 * second, 4 * second)
                                    .tagged(6 * second, tags)
                                    .unit(otherTagPID, pes(7 * second, tags), 20);
  const std::string audio =
      stamp(9 * second, frame("TIT2", "\3title")) + audioFrame() + tags + audioFrame(4);
  const std::string fragmented = movie(1, 48'000) + message(1, 1'000, 500, tags) +
                                 message(0, 90'000, 0, tags) + fragment(1, 96'000) +
                                 message(1, 1'000, 3'000, tag(frame("TXXX", "\3\0v"s, 3), 3));
  for (const std::string& stream : {transport, audio, fragmented}) corpus.add(stream, sizes);
}

/// Traces that were recorded, in pieces.
void addTraces(Corpus corpus, const std::filesystem::path& recorded) {
  for (const auto& entry : std::filesystem::directory_iterator(recorded)) {
    std::ifstream file(entry.path());
    std::string header, line, piece;
    std::getline(file, header);
    for (int lines = 1; std::getline(file, line); ++lines) {
      if (line.size() < 2'000) piece += line + '\n';
      if (lines % 12 == 0) corpus.add(header + '\n' + std::exchange(piece, {}));
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: xel_fuzz_seeds FOLDER TRACES\n", stderr);
    return 2;
  }
  try {
    const std::filesystem::path folder = argv[1];
    addAnswers({folder, "answer"});
    addDocuments({folder, "document"});
    addPings({folder, "ping"});
    addSessions({folder, "session"});
    addTaggedStreams({folder, "timedtags"});
    addTraces({folder, "trace"}, argv[2]);
    addVast({folder, "vast"});
    addXML({folder, "xml"});
    addDocuments({folder, "json"});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "xel_fuzz_seeds: %s\n", error.what());
    return 1;
  }
}
