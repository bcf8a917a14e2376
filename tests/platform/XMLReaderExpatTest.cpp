#include <random>

#include <gtest/gtest.h>

#include "support/ExpatTrace.h"
#include "support/RandomXML.h"
#include "support/XMLTrace.h"

namespace xel::test {
namespace {

TEST(XMLReaderBesideExpat, ReportsTheSameEventsForRandomDocuments) {
  for (unsigned seed = 0; seed < 4000; ++seed) {
    std::mt19937 random(seed);
    const auto below = [&random](std::size_t bound) { return random() % bound; };
    const std::string document = RandomXML(below).text;
    const ExpatTrace expected(document);
    const XMLRun run(document);
    ASSERT_TRUE(expected.wellFormed && run.wellFormed) << seed << "\n" << document;
    ASSERT_EQ(run.events, expected.events) << seed << "\n" << document;
  }
}

}  // namespace
}  // namespace xel::test
