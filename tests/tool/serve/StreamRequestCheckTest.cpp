#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "serve/StreamRequestCheck.h"

namespace xel::serve {
namespace {

const std::string form =
    "correlator=4294967295&url=com.example.player&is_lat=0&rdid=01234567-89AB-4CDE-8F01-"
    "23456789ABCD&idtype=tvOS&sdkv=t.1.2.3/com.example.player&submodel=Box8,9";
const std::string agent = "XELtvOS/t.1.2.3 Debian GNU/Linux/12 com.example.player/4.5";

/// The status and the sentence of the refusal; empty when there is none.
std::string refusal(const ReceivedStreamRequest& request, const Credentials& credentials = {}) {
  const auto found = refusalOf(request, credentials);
  return found ? std::to_string(found->status) + " " + found->sentence : std::string();
}

TEST(StreamRequestCheck, AcceptsWhatALibrarySends) {
  EXPECT_EQ(refusal({StreamKind::live, agent, "",
                     form + "&iu=%2Fa%20b&xelfw_pos=1&sam_id=m 1&attempt_preroll=false"}),
            "");
  EXPECT_EQ(refusal({StreamKind::vod, "XELtvOS/t.(null) ExampleOS/ (null)/", "", form}), "")
      << "an application that does not name itself";
}

TEST(StreamRequestCheck, RefusesABodyInOneSentence) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "field \"correlator\" is missing."},
      {"correlator=4294967296",
       "field \"correlator\" must be a number of 32 bits, not \"4294967296\"."},
      {"correlator=1&url=a&is_lat=0&rdid=01234567-89ab-4CDE-8F01-23456789ABCD",
       "field \"rdid\" must be a UUID in upper case, not "
       "\"01234567-89ab-4CDE-8F01-23456789ABCD\"."},
      {form + "&x", "form holds \"x\", which is not a field with a value."},
      {form + "&is_lat=1", "field \"is_lat\" stands in the form twice."},
      {form + "&attempt_preroll=true", "field \"attempt_preroll\" has no place in this request."},
      {form + "&sz=", "field \"sz\" is empty."},
      {form + "&cust_params=100%25&iu=a%2", "field \"iu\" is not percent-encoded."},
  };
  for (const auto& [body, sentence] : cases) {
    EXPECT_EQ(refusal({StreamKind::vod, agent, "", body}), "400 The " + sentence);
  }
}

TEST(StreamRequestCheck, DemandsTheHeaders) {
  const auto status = [](const std::string& authorization, const Credentials& credentials) {
    return refusal({StreamKind::vod, agent, authorization, form}, credentials).substr(0, 3);
  };
  EXPECT_EQ(status("", {"K", "T"}), "401");
  EXPECT_EQ(status("TROVDAI key=\"T\"", {"K", "T"}), "401");
  EXPECT_EQ(status("TROVDAI key=\"K\"", {"K", "T"}), "");
  EXPECT_EQ(status("TROVDAI token=\"T\"", {"K", "T"}), "");
  EXPECT_EQ(status("TROVDAI token=\"T\"", {"K", {}}), "401");
  EXPECT_EQ(refusal({StreamKind::vod, "curl/8", "", form}).substr(0, 3), "400");
}

}  // namespace
}  // namespace xel::serve
