#include <string>

#include <gtest/gtest.h>

#include "StreamRequestCheck.h"

namespace xel::serve {
namespace {

const std::string form =
    "correlator=4294967295&url=com.example.player&is_lat=0&rdid=01234567-89AB-4CDE-8F01-"
    "23456789ABCD"
    "&idtype=tvOS&sdkv=t.1.2.3/com.example.player&submodel=Box8,9";
const std::string agent = "XELtvOS/t.1.2.3 Debian GNU/Linux/12 com.example.player/4.5";

/// The form with one text in it replaced.
std::string formWith(const std::string& what, const std::string& with) {
  std::string changed = form;
  return changed.replace(changed.find(what), what.size(), with);
}

/// The refusal as one text; empty when there is none.
std::string refusal(const ReceivedStreamRequest& request, const Credentials& credentials = {}) {
  const auto found = refusalOf(request, credentials);
  return found ? std::to_string(found->status) + " " + found->sentence : std::string();
}

TEST(StreamRequestCheck, AcceptsWhatALibrarySends) {
  EXPECT_EQ(refusal({StreamKind::vod, agent, "", form}), "");
  EXPECT_EQ(refusal({StreamKind::live, agent, "",
                     form + "&iu=%2Fa%20b&xelfw_pos=1&sam_id=m 1&attempt_preroll=false"}),
            "");
  // An application that does not name itself.
  EXPECT_EQ(refusal({StreamKind::vod, "XELtvOS/t.(null) ExampleOS/ (null)/", "",
                     formWith("url=com.example.player", "url=(null)")}),
            "");
}

struct BodyCase {
  const char* behaviour;
  std::string body;
  const char* expected;
};
class StreamRequestBody : public testing::TestWithParam<BodyCase> {};
TEST_P(StreamRequestBody, IsRefusedInOneSentence) {
  EXPECT_EQ(refusal({StreamKind::vod, agent, "", GetParam().body}), GetParam().expected);
}
INSTANTIATE_TEST_SUITE_P(
    , StreamRequestBody,
    testing::Values(
        BodyCase{"Empty", "", "400 The field \"correlator\" is missing."},
        BodyCase{"NoField", form + "&x",
                 "400 The form holds \"x\", which is not a field with a "
                 "value."},
        BodyCase{"Twice", form + "&is_lat=1", "400 The field \"is_lat\" stands in the form twice."},
        BodyCase{"CorrelatorOver32Bits", formWith("4294967295", "4294967296"),
                 "400 The field \"correlator\" must be a number of 32 bits, not \"4294967296\"."},
        BodyCase{"LowerCaseUUID", formWith("89AB", "89ab"),
                 "400 The field \"rdid\" must be a UUID in upper case, not "
                 "\"01234567-89ab-4CDE-8F01-23456789ABCD\"."},
        BodyCase{"FieldOfTheOtherKind", form + "&attempt_preroll=true",
                 "400 The field \"attempt_preroll\" has no place in this request."},
        BodyCase{"EmptyParameter", form + "&sz=", "400 The field \"sz\" is empty."},
        BodyCase{"UnescapedParameter", form + "&cust_params=100%25&iu=a%2",
                 "400 The field \"iu\" is not percent-encoded."}),
    [](const auto& each) { return each.param.behaviour; });

TEST(StreamRequestCheck, DemandsTheHeaders) {
  const std::string missing = "401 The Authorization header is missing.";
  const std::string unfit = "401 The Authorization header does not fit.";
  const Credentials both{"K", "T"};
  const auto authorized = [&](const std::string& authorization, const Credentials& credentials) {
    return refusal({StreamKind::vod, agent, authorization, form}, credentials);
  };
  EXPECT_EQ(authorized("", both), missing);
  EXPECT_EQ(authorized("TROVDAI key=\"T\"", both), unfit);
  EXPECT_EQ(authorized("TROVDAI key=\"K\"", both), "");
  EXPECT_EQ(authorized("TROVDAI token=\"T\"", both), "");
  EXPECT_EQ(authorized("TROVDAI token=\"T\"", {"K", {}}), unfit);
  EXPECT_EQ(refusal({StreamKind::vod, "curl/8", "", form}).substr(0, 33),
            "400 The User-Agent header \"curl/8");
}

}  // namespace
}  // namespace xel::serve
