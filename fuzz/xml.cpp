// The XML reader beside expat: both report the same events of documents that are well-formed, and
// agree on which documents are.

#include <algorithm>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "fuzz/support/Require.h"
#include "platform/Text.h"
#include "support/ExpatTrace.h"
#include "support/RandomXML.h"
#include "support/XMLTrace.h"

namespace {

using xel::fuzz::require;

std::string generated(FuzzedDataProvider& input) {
  return xel::test::RandomXML([&input](std::size_t bound) {
           return input.ConsumeIntegralInRange<std::size_t>(0, bound - 1);
         })
      .text;
}

std::string mutated(FuzzedDataProvider& input, std::string document) {
  for (int edits = input.ConsumeIntegralInRange(1, 4); edits > 0; --edits) {
    const auto at = input.ConsumeIntegralInRange<std::size_t>(0, document.size());
    const auto length = input.ConsumeIntegralInRange<std::size_t>(0, 40);
    document.replace(at, length, input.ConsumeRandomLengthString(40));
  }
  return document;
}

/// Whether any name may have letters beyond ASCII.
bool hasForeignNames(const std::string& document) {
  bool isInMarkup = false;
  return std::any_of(document.begin(), document.end(), [&](char c) {
    if (c == '<' || c == '>') isInMarkup = c == '<';
    return isInMarkup && c < 0;
  });
}

/// What the two differ on: the reader takes the names of the fifth edition of XML 1.0, expat those
/// of the fourth; the reader refuses declared entities, which expat expands; and expat refuses a
/// version that is not 1.0.
bool mayDiffer(const std::string& document) {
  const bool hasOtherVersion = document.find("<?xml") != std::string::npos &&
                               document.find("version=\"1.0\"") == std::string::npos;
  return hasForeignNames(document) || hasOtherVersion ||
         document.find("<!ENTITY") != std::string::npos;
}

/// Whether expat may add attributes or texts that are only declared.
bool hasDeclarations(const std::string& document) {
  return document.find("<!ENTITY") != std::string::npos ||
         document.find("<!ATTLIST") != std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  enum class Document { generated, mutated, raw, kMaxValue = raw };
  const auto kind = input.ConsumeEnum<Document>();
  std::string document;
  if (kind == Document::raw) {
    document = input.ConsumeRemainingBytesAsString();
  } else {
    document = generated(input);
    if (kind == Document::mutated) document = mutated(input, std::move(document));
  }

  const xel::test::ExpatTrace expected(document);
  const xel::test::XMLRun run(document);
  if (kind == Document::generated) require(run.wellFormed, "a good document that is refused");
  require(!run.wellFormed || xel::isUTF8(document), "a document that is not UTF-8");
  require(run.wellFormed == expected.wellFormed || mayDiffer(document),
          "a verdict that is not expat's");
  if (run.wellFormed && expected.wellFormed && !hasDeclarations(document)) {
    require(run.events == expected.events, "events that are not expat's");
  }
  return 0;
}
