#include <cstdio>
#include <fstream>
#include <map>
#include <string>

#include <benchmark/benchmark.h>
#include <expat.h>
#include <libxml/parser.h>
#include <pugixml.hpp>

#include "bench/Documents.h"
#include "bench/Figures.h"
#include "vast/XELVastParser.h"

namespace xel::bench {
namespace {

const std::string& documentOf(const benchmark::State& state) {
  static std::map<std::int64_t, std::string> documents;
  std::string& document = documents[state.range(0)];
  if (document.empty()) document = vastDocument(static_cast<int>(state.range(0)));
  return document;
}

void vast(benchmark::State& state) {
  const std::string& document = documentOf(state);
  if (XELVastParser::init()->parseVastDocument(document).size() != 1) {
    state.SkipWithError("the ad was not read");
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(XELVastParser::init()->parseVastDocument(document));
  }
  state.counters["bytes"] = static_cast<double>(document.size());
}
BENCHMARK(vast)->Arg(1)->Arg(6)->Arg(80)->Arg(830);

void libxml2EmptyHandlers(benchmark::State& state) {
  const std::string& document = documentOf(state);
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
}
BENCHMARK(libxml2EmptyHandlers)->Arg(1)->Arg(6)->Arg(80)->Arg(830);

void expatEmptyHandlers(benchmark::State& state) {
  const std::string& document = documentOf(state);
  for (auto _ : state) {
    const XML_Parser parser = XML_ParserCreate("UTF-8");
    XML_SetElementHandler(
        parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
    if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) != XML_STATUS_OK) {
      state.SkipWithError("the document is not well-formed");
    }
    XML_ParserFree(parser);
  }
}
BENCHMARK(expatEmptyHandlers)->Arg(6);

void pugixmlTree(benchmark::State& state) {
  const std::string& document = documentOf(state);
  for (auto _ : state) {
    pugi::xml_document tree;
    if (!tree.load_buffer(document.data(), document.size())) {
      state.SkipWithError("the document is not well-formed");
    }
  }
}
BENCHMARK(pugixmlTree)->Arg(6);

/// What a web player would take, in Node.js: its parser runs over the document for a second.
void vastClientOnNode(benchmark::State& state) {
  const std::string file = std::string(XEL_BENCH_PEERS) + "/vast.xml";
  std::ofstream(file) << documentOf(state);
  const std::string command = "cd " XEL_BENCH_PEERS " && node vast-client.mjs vast.xml";
  for (auto _ : state) {
    double nanoseconds = 0;
    std::FILE* const output = popen(command.c_str(), "r");
    if (!output || std::fscanf(output, "%lf", &nanoseconds) != 1) {
      state.SkipWithError("vast-client could not be run");
    }
    if (output) pclose(output);
    state.SetIterationTime(nanoseconds / 1e9);
  }
}
BENCHMARK(vastClientOnNode)->Arg(6)->UseManualTime()->Iterations(1);

double ratio(const Results& results, const char* measured, const char* reference) {
  return results.time(measured) / results.time(reference);
}

double timePerByte(const Results& results, const std::string& document) {
  return results.time("vast/" + document) / results.counter("vast/" + document, "bytes");
}

constexpr auto atMost = Figure::Bound::atMost;
constexpr auto atLeast = Figure::Bound::atLeast;

const AddFigure figures[] = {
    AddFigure({"VAST of 30 KB to its ad, to libxml2 with empty handlers", "×", atMost, 1.3,
               [](const Results& r) { return ratio(r, "vast/6", "libxml2EmptyHandlers/6"); }}),
    AddFigure({"the same, to expat with empty handlers", "×", atMost, 3,
               [](const Results& r) { return ratio(r, "vast/6", "expatEmptyHandlers/6"); }}),
    AddFigure({"the same, to a tree of pugixml, which has no events", "×", atMost, 10,
               [](const Results& r) { return ratio(r, "vast/6", "pugixmlTree/6"); }}),
    AddFigure({"vast-client on Node.js, to it", "×", atLeast, 8,
               [](const Results& r) { return ratio(r, "vastClientOnNode/6", "vast/6"); }}),
    AddFigure({"VAST of 4 KB, cost of a byte to that at 30 KB", "×", atMost, 1.5,
               [](const Results& r) { return timePerByte(r, "1") / timePerByte(r, "6"); }}),
    AddFigure({"VAST of 300 KB, the same", "×", atMost, 1.5,
               [](const Results& r) { return timePerByte(r, "80") / timePerByte(r, "6"); }}),
    AddFigure({"VAST of 3 MB, the same", "×", atMost, 1.5,
               [](const Results& r) { return timePerByte(r, "830") / timePerByte(r, "6"); }}),
};

}  // namespace
}  // namespace xel::bench
