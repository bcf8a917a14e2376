#include <string>

#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include "bench/Ratios.h"
#include "vast/XELVastParser.h"

namespace {

std::string tag(const std::string& indent, const std::string& name, const std::string& attributes,
                const std::string& url) {
  return indent + "<" + name + attributes + "><![CDATA[" + url + "]]></" + name + ">\n";
}

/// A URL of the length that measurement vendors use.
std::string vendorURL(int vendor, const std::string& event) {
  return "https://pixel" + std::to_string(vendor) + ".tracking.example/v2/event?type=" + event +
         "&campaign=7731904&line=55120983&creative=138402217755&pub=live-sports&cb=[CACHEBUSTING]"
         "&ts=[TIMESTAMP]&session=4f9a1c0e-8f0b-4b53-9d5e-1f2a3b4c5d6e&consent=CPzHq4APzHq4AAHABB";
}

/// One inline ad as servers write it, about 30 KB: indented, six vendors on every event, media
/// files, companions and an extension.
std::string makeVastDocument() {
  std::string vast =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<VAST version=\"4.0\">\n  <Ad id=\"5512\">\n"
      "    <InLine>\n      <AdSystem version=\"2\">Example</AdSystem>\n"
      "      <AdTitle>Thirty seconds</AdTitle>\n";
  for (int vendor = 0; vendor < 6; ++vendor) {
    vast += tag("      ", "Impression", " id=\"v\"", vendorURL(vendor, "impression"));
    vast += tag("      ", "Error", "", vendorURL(vendor, "error"));
  }
  vast +=
      "      <Creatives>\n        <Creative id=\"1384\" sequence=\"1\">\n          <Linear>\n"
      "            <Duration>00:00:30</Duration>\n            <TrackingEvents>\n";
  for (const char* event : {"start", "creativeView", "firstQuartile", "midpoint", "thirdQuartile",
                            "complete", "mute", "unmute", "pause", "resume"}) {
    for (int vendor = 0; vendor < 6; ++vendor) {
      vast += tag("              ", "Tracking", std::string(" event=\"") + event + '"',
                  vendorURL(vendor, event));
    }
  }
  vast += "            </TrackingEvents>\n            <MediaFiles>\n";
  for (int rate = 400; rate <= 4000; rate += 400) {
    vast +=
        tag("              ", "MediaFile",
            " id=\"m\" delivery=\"progressive\" type=\"video/mp4\" width=\"1280\" height=\"720\""
            " bitrate=\"" +
                std::to_string(rate) + '"',
            "https://media.example/creatives/138402217755/" + std::to_string(rate) + ".mp4");
  }
  vast +=
      "            </MediaFiles>\n          </Linear>\n        </Creative>\n"
      "        <Creative id=\"1385\">\n          <CompanionAds>\n";
  for (int companion = 0; companion < 4; ++companion) {
    vast += "            <Companion width=\"300\" height=\"250\">\n";
    vast += tag("              ", "StaticResource", " creativeType=\"image/png\"",
                "https://media.example/creatives/companion.png");
    vast += tag("              ", "Tracking", " event=\"creativeView\"", vendorURL(0, "view"));
    vast += "            </Companion>\n";
  }
  return vast +
         "          </CompanionAds>\n        </Creative>\n      </Creatives>\n"
         "      <Extensions>\n        <Extension type=\"example\"><Data>" +
         std::string(4000, 'x') +
         "</Data></Extension>\n      </Extensions>\n    </InLine>\n  </Ad>\n</VAST>\n";
}

const std::string& vastDocument() {
  static const std::string document = makeVastDocument();
  return document;
}

void vastParse(benchmark::State& state) {
  const std::string& document = vastDocument();
  if (XELVastParser::init()->parseVastDocument(document).size() != 1) {
    state.SkipWithError("the ad was not read");
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(XELVastParser::init()->parseVastDocument(document));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
}
BENCHMARK(vastParse);

void libxml2EmptyHandlers(benchmark::State& state) {
  const std::string& document = vastDocument();
  xmlSAXHandler handlers{};
  handlers.startElement = [](void*, const xmlChar*, const xmlChar**) {};
  handlers.endElement = [](void*, const xmlChar*) {};
  handlers.characters = [](void*, const xmlChar*, int) {};
  handlers.ignorableWhitespace = handlers.characters;
  handlers.cdataBlock = handlers.characters;
  for (auto _ : state) {
    xmlParserCtxt* context = xmlCreatePushParserCtxt(&handlers, nullptr, nullptr, 0, nullptr);
    xmlCtxtUseOptions(context, XML_PARSE_SAX1 | XML_PARSE_NOENT | XML_PARSE_NONET |
                                   XML_PARSE_IGNORE_ENC | XML_PARSE_HUGE);
    xmlParseChunk(context, document.data(), static_cast<int>(document.size()), 1);
    if (!context->wellFormed) state.SkipWithError("the document is not well-formed");
    xmlFreeParserCtxt(context);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(document.size()));
}
BENCHMARK(libxml2EmptyHandlers);

const xel::bench::AddRatio ratio({"VAST of 30 KB, to libxml2 with empty handlers", "vastParse",
                                  "libxml2EmptyHandlers", xel::bench::Ratio::Bound::atMost, 1.5});

}  // namespace
