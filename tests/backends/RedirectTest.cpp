#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "backends/CurlHTTPClientTest.h"
#include "backends/curl/AddressZone.h"
#include "backends/curl/RedirectGuard.h"

namespace xel {
namespace {

using test::field;
using test::get;

TEST(AddressZone, IsThatOfTheAddressHoweverItIsWritten) {
  const std::pair<AddressZone, std::vector<const char*>> zones[] = {
      {AddressZone::machine,
       {"127.0.0.1", "127.255.255.255", "0.0.0.0", "0.1.2.3", "::1", "::", "::ffff:127.0.0.1",
        "::ffff:7f00:1", "::127.0.0.1", "64:ff9b::127.0.0.1", "2002:7f00:1::", "", "localhost",
        "127.1", "300.1.1.1"}},
      {AddressZone::link,
       {"169.254.169.254", "fe80::1", "fe80::1%eth0", "febf::", "::ffff:a9fe:1"}},
      {AddressZone::network,
       {"10.0.0.0", "10.255.255.255", "172.16.0.1", "172.31.255.255", "192.168.1.1", "100.64.0.1",
        "100.127.255.255", "192.0.0.8", "198.19.0.1", "224.0.0.1", "255.255.255.255",
        "fc00::", "fdff::1", "fec0::1", "ff02::1", "::ffff:192.168.1.1", "64:ff9b::a00:1",
        "64:ff9b:1::8.8.8.8", "2002:c0a8:101::1"}},
      {AddressZone::internet,
       {"1.1.1.1",        "9.255.255.255",   "11.0.0.0",         "126.255.255.255",
        "128.0.0.0",      "100.63.255.255",  "100.128.0.0",      "172.15.255.255",
        "172.32.0.0",     "192.167.255.255", "192.169.0.0",      "192.0.1.0",
        "198.17.255.255", "198.20.0.0",      "223.255.255.255",  "2606:4700::1111",
        "::2:0:0",        "::ffff:8.8.8.8",  "64:ff9b::808:808", "2002:808:808::"}},
  };
  for (const auto& [zone, addresses] : zones) {
    for (const auto* address : addresses) EXPECT_EQ(zoneOf(address), zone) << address;
  }
}

TEST(RedirectGuard, LetsNoHopLeadWhereTheRuleForbids) {
  const RedirectGuard::Hop internet = {"http://ads.example/", "8.8.8.8", "192.168.1.5", 80};
  const RedirectGuard::Hop secure = {"HTTPS://ads.example/", "8.8.8.8", "192.168.1.5", 443};
  const RedirectGuard::Hop other = {"http://other.example/", "1.1.1.1", "192.168.1.5", 80};
  const RedirectGuard::Hop router = {"http://public.example/", "192.168.1.1", "192.168.1.5", 80};
  const RedirectGuard::Hop secureRouter = {"https://r.example/", "192.168.1.1", "192.168.1.5", 443};
  const RedirectGuard::Hop box = {"http://box.example:80/", "192.168.1.5", "192.168.1.5", 80};
  const RedirectGuard::Hop loopback = {"http://localhost:8080/", "127.0.0.1", "127.0.0.1", 8080};
  const RedirectGuard::Hop sixth = {"http://[::1]:8080/", "::1", "::1", 8080};
  const RedirectGuard::Hop viaProxy = {"http://10.0.0.1/", "127.0.0.1", "127.0.0.1", 3128};
  const struct {
    const char* what;
    std::vector<RedirectGuard::Hop> hops;
    RedirectRule strictestAllowing;
    bool isPing = false;
  } cases[] = {
      {"no redirect", {loopback}, RedirectRule::none},
      {"to another", {secure, secure}, RedirectRule::httpsOnly},
      {"in the open", {internet, other}, RedirectRule::notInward},
      {"to https", {internet, secure}, RedirectRule::httpsOnly},
      {"from https", {secure, other}, RedirectRule::anywhere},
      {"ping from https", {secure, other}, RedirectRule::notInward, true},
      {"later from https", {internet, secure, other}, RedirectRule::anywhere},
      {"into the network", {internet, router}, RedirectRule::anywhere, true},
      {"into it over https", {secure, secureRouter}, RedirectRule::anywhere},
      {"to this machine", {internet, loopback}, RedirectRule::anywhere},
      {"to its own address", {router, box}, RedirectRule::anywhere},
      {"local set-up", {loopback, loopback, sixth, box}, RedirectRule::notInward},
      {"out of it", {loopback, router, internet}, RedirectRule::notInward},
      {"out and back", {loopback, internet, loopback}, RedirectRule::anywhere},
      {"by proxy", {internet, viaProxy, viaProxy}, RedirectRule::notInward},
      {"from the proxy's side inward", {viaProxy, loopback}, RedirectRule::anywhere},
  };
  for (const auto& test : cases) {
    for (const auto rule : {RedirectRule::anywhere, RedirectRule::notInward,
                            RedirectRule::httpsOnly, RedirectRule::none}) {
      RedirectGuard guard(rule, test.isPing);
      bool allowed = true;
      for (std::size_t i = 0; i < test.hops.size() && allowed; ++i) {
        auto hop = test.hops[i];
        hop.isRedirect = i > 0;
        allowed = guard.allows(hop);
      }
      EXPECT_EQ(allowed, rule <= test.strictestAllowing)
          << test.what << " by rule " << static_cast<int>(rule) << ": " << guard.refusal();
    }
  }
}

/// Redirects of a real server, and a rule for them.
class RedirectTest : public test::CurlHTTPClientTest {
 protected:
  void setRule(RedirectRule rule) { client_ = makeCurlHTTPClient({server_.caFile(), rule}, loop_); }
  /// The status in the end, or why it came to none.
  std::string outcomeOf(const HTTPRequest& request) {
    const HTTPResult result = fetch(request);
    if (!result.error) return std::to_string(result.response.status);
    EXPECT_EQ(result.error->code, static_cast<int>(TransferError::redirectRefused));
    return result.error->description;
  }
};

TEST_F(RedirectTest, IsRefusedBeforeAnythingIsSent) {
  // What comes over the proxy may come from anywhere, so this machine's ports are not for it.
  setenv("http_proxy", server_.plain().c_str(), 1);
  setenv("no_proxy", "127.0.0.1", 1);
  const std::string port = server_.plain().substr(server_.plain().rfind(':'));
  const HTTPRequest inward = get("http://ads.example/redirect-to-http");
  const HTTPRequest elsewhere = get("http://ads.example/redirect-elsewhere");
  setRule(RedirectRule::notInward);
  EXPECT_EQ(outcomeOf(inward), "The redirect to http://127.0.0.1" + port +
                                   " is refused: it leads from the internet to this machine.");
  EXPECT_EQ(outcomeOf(elsewhere), "200");
  setRule(RedirectRule::anywhere);
  EXPECT_EQ(outcomeOf(inward), "200");
  unsetenv("http_proxy");
}

TEST_F(RedirectTest, LeavesTheSecureWayForPingsOnly) {
  HTTPRequest document = get(server_.overHTTP1() + "/redirect-to-http");
  HTTPRequest ping = document;
  ping.trackingEvent = "start";
  const std::string plain = "The redirect to " + server_.plain() + " is refused: ";
  const struct {
    RedirectRule rule;
    std::string document, ping;
  } cases[] = {
      {RedirectRule::anywhere, "200", "200"},
      {RedirectRule::notInward, plain + "it leads from https to http.", "200"},
      {RedirectRule::httpsOnly, plain + "only https is followed.",
       plain + "only https is followed."},
      {RedirectRule::none, plain + "none is followed.", plain + "none is followed."},
  };
  for (const auto& test : cases) {
    setRule(test.rule);
    EXPECT_EQ(outcomeOf(document), test.document);
    EXPECT_EQ(outcomeOf(ping), test.ping);
  }
}

TEST_F(RedirectTest, TakesTheAuthorizationToNoOtherHost) {
  setenv("http_proxy", server_.plain().c_str(), 1);
  unsetenv("no_proxy");
  const std::pair<const char*, const char*> received[] = {{"redirect", "secret"},
                                                          {"redirect-elsewhere", "(none)"}};
  for (const auto& [path, authorization] : received) {
    HTTPRequest request = get(std::string("http://ads.example/") + path);
    request.headers = {{"Authorization", "secret"}};
    EXPECT_EQ(field(fetch(request).response, "X-Authorization"), authorization) << path;
  }
  unsetenv("http_proxy");
}

}  // namespace
}  // namespace xel
