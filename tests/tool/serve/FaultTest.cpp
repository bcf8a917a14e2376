#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "serve/FaultList.h"

namespace xel::serve {
namespace {

TEST(Fault, IsRefusedWithWhatIsAllowed) {
  const std::pair<const char*, const char*> cases[] = {
      {"hang", "is not ENDPOINT=KIND, such as document=status:500"},
      {"pong=hang", "names no endpoint; give init, document, manifest, segment or ping"},
      {"ping=hung", "names no kind of fault; give delay, hang, status"},
      {"ping=delay", "delay takes seconds up to 3600, such as delay:2.5"},
      {"ping=delay:-1", "delay takes seconds"},
      {"ping=delay:nan", "delay takes seconds"},
      {"ping=hang:3", "hang takes no argument"},
      {"ping=status:199", "status takes a code from 200 to 599, such as status:503"},
      {"ping=status:404.5", "status takes a code"},
      {"ping=slow-drip:0", "slow-drip takes bytes a second"},
      {"ping=hang@", "the requests that are meant: @2, @2-4 or @2-"},
      {"ping=hang@0", "the requests that are meant"},
      {"ping=hang@3-2", "the requests that are meant"},
      {"ping=hang@2-x", "the requests that are meant"},
  };
  for (const auto& [text, sentence] : cases) {
    try {
      Fault::parse(text);
      ADD_FAILURE() << text << " was taken";
    } catch (const std::invalid_argument& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with('"' + std::string(text) + "\" "));
      EXPECT_NE(std::string(error.what()).find(sentence), std::string::npos) << error.what();
    }
  }
  EXPECT_THROW(FaultList::parse("{}"), std::invalid_argument);
  EXPECT_THROW(FaultList::parse("[1]"), std::invalid_argument);
}

TEST(FaultList, StrikesTheRequestsThatAreMeantAndCounts) {
  FaultList faults(FaultList::parse(
      R"(["ping=hang@2", "ping=status:500@2-3", "ping=reset@5-", "document=malformed"])"));
  std::string struck;
  for (int request = 1; request <= 6; ++request) {
    const auto fault = faults.strike(Endpoint::ping);
    struck += (fault ? fault->text : "-") + " ";
  }
  EXPECT_EQ(struck, "- ping=hang@2 ping=status:500@2-3 - ping=reset@5- ping=reset@5- ");
  EXPECT_EQ(faults.json(), R"([{"fault":"ping=hang@2","requests":6,"struck":1},)"
                           R"({"fault":"ping=status:500@2-3","requests":6,"struck":1},)"
                           R"({"fault":"ping=reset@5-","requests":6,"struck":2},)"
                           R"({"fault":"document=malformed","requests":0,"struck":0}])");
  faults.replace({});
  EXPECT_FALSE(faults.strike(Endpoint::document));
}

}  // namespace
}  // namespace xel::serve
