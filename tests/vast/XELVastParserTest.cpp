#include <gtest/gtest.h>

#include "xel/simulation/VastBuilder.h"

#include "vast/XELVastParser.h"

namespace xel {
namespace {

std::string field(const char* name, const std::optional<std::string>& text) {
  return text ? std::string(" ") + name + "=" + *text : "";
}

std::string describe(const TrackedEvents& tracked) {
  std::string text;
  for (const auto& [event, urls] : tracked.trackingURLs()) {
    text += " " + event + ":";
    for (const std::string& url : urls) text += "[" + url + "]";
  }
  return text;
}

/// What an ad says of itself; what is absent is left out.
std::string describe(const XELAd& ad) {
  std::string text = "ad" + field("id", ad.adID()) + field("title", ad.adTitle()) +
                     field("system", ad.adSystem()) + field("description", ad.adDescription()) +
                     describe(static_cast<const TrackedEvents&>(ad));
  for (const auto& creative : ad.creatives()) {
    text += std::string(creative->isLinear() ? "; linear" : "; creative") +
            field("id", creative->adID()) + " #" + std::to_string(creative->sequence()) +
            field("universal", creative->universalAdIdValue()) +
            field("registry", creative->universalAdIdRegistry()) + describe(*creative);
  }
  for (const auto& companion : ad.companions()) {
    text += "; companion " + std::to_string(companion->width()) + "x" +
            std::to_string(companion->height()) + field("api", companion->apiFramework()) +
            field("resource", companion->staticResourceURL()) + describe(*companion);
  }
  return text;
}

std::vector<std::string> adsOf(const std::string& document) {
  std::vector<std::string> ads;
  for (const auto& ad : XELVastParser::init()->parseVastDocument(document)) {
    ads.push_back(describe(*ad));
  }
  return ads;
}

TEST(XELVastParser, ReadsTheElementsOfAnAd) {
  const struct {
    const char *content, *expected;
  } cases[] = {
      {"<AdSystem>s</AdSystem><AdTitle>t</AdTitle><Description>d</Description>",
       " title=t system=s description=d"},
      {"<InLine><Extensions><AdTitle>t</AdTitle></Extensions></InLine>", " title=t"},
      {"<adtitle>t</adtitle><AdTitles>t</AdTitles><x:AdTitle>t</x:AdTitle><AdServing>t</AdServing>",
       ""},
      {"<AdTitle>one</AdTitle><AdTitle>two</AdTitle><AdTitle></AdTitle>", " title=two"},
      {"<AdTitle>a&amp;b</AdTitle><AdSystem>b&lt;</AdSystem>", " title=b system=<"},
      {"<AdTitle>\n<![CDATA[t]]>\n </AdTitle><AdSystem> <![CDATA[]]></AdSystem>",
       " title=\n  system="},
      {"<AdTitle>a<b>c</b>d</AdTitle><AdSystem><b/>s</AdSystem>", " title=a"},
      {"<AdTitle>Größe 漢字 — 😀 und mehr</AdTitle>", " title=Größe 漢字 — 😀 und mehr"},
      {"<Description>one\r\ntwo\n  été\n</Description>", " description=one\ntwo\n  été\n"},
      {"<Impression><![CDATA[u]]></Impression><Error>e</Error><Impression>u</Impression>",
       " error:[e] start:[u][u]"},
      {"<Impression>\n <![CDATA[u?a&b]]>\n</Impression>", " start:[\n ][u?a&b][\n]"},
      {"<Impression>u?a&amp;b</Impression>", " start:[u?a][&][b]"},
      {"<TrackingEvents><Tracking event='firstQuartile'>q</Tracking><Tracking "
       "event='X-Y'>x</Tracking>"
       "<Tracking event='start'>s</Tracking></TrackingEvents>",
       " firstquartile:[q] start:[s] x-y:[x]"},
      {"<Error>e</Error><Tracking>lost</Tracking><Tracking Event='start'>lost</Tracking>",
       " error:[e]"},
      {"<Creatives/><AdTitle>t</AdTitle>", " title=t"},
      {"<Creatives><Creative id='c1' sequence='2'><Linear><TrackingEvents><Tracking "
       "event='Start'>s</Tracking>"
       "</TrackingEvents></Linear></Creative><Creative><Linear/></Creative></Creatives>",
       "; linear id=c1 #2 start:[s]; linear #0"},
      {"<Creatives><Creative sequence='+3x'><Linear/></Creative><Creative "
       "sequence='x3'><Linear/></Creative></Creatives>",
       "; linear #3; linear #0"},
      {"<Creatives><Creative><Linear><Impression>i</Impression><Error> "
       "<![CDATA[e]]></Error></Linear></Creative></Creatives>",
       "; linear #0 error:[ ][e] start:[i]"},
      {"<Creatives><Tracking "
       "event='a'>x</Tracking><Creative><Error>x</Error><NonLinearAds><Tracking event='a'>x"
       "</Tracking></NonLinearAds></Creative><AdTitle>x</AdTitle></Creatives>",
       ""},
      {"<Creatives><Creative><UniversalAdId idRegistry='r'>  X1 "
       "\n</UniversalAdId><Linear/></Creative></Creatives>",
       "; linear #0 universal=X1 registry=r"},
      {"<Creatives><Creative><UniversalAdId "
       "idValue='A'>X1</UniversalAdId><Linear/></Creative></Creatives>",
       "; linear #0 universal=A"},
      {"<Creatives><Creative><UniversalAdId>\n "
       "<![CDATA[\tfirst\n]]>second</UniversalAdId><Linear/></Creative></Creatives>",
       "; linear #0 universal=first"},
      {"<Creatives><Creative><UniversalAdId idValue='A' "
       "idRegistry='r'/><UniversalAdId>B</UniversalAdId><Linear/>"
       "</Creative></Creatives>",
       "; linear #0 universal=B"},
      {"<Creatives><Creative id='c'><Linear/><UniversalAdId "
       "idRegistry='r'>late</UniversalAdId></Creative>"
       "<Creative><Linear/></Creative></Creatives>",
       "; linear id=c #0; linear #0"},
      {"<Creatives><Creative><CompanionAds><Companion width='300' height='250' apiFramework='x' "
       "id='i'>"
       "<StaticResource><![CDATA[u]]></StaticResource><Tracking "
       "event='creativeView'>v</Tracking></Companion>"
       "<Companion "
       "height='1e2'/></CompanionAds><Linear/></Creative><Creative><CompanionAds/><CompanionAds>"
       "<Companion width='w'/></CompanionAds></Creative></Creatives>",
       "; linear #0; companion 300x250 api=x resource=u creativeview:[v]; companion 0x1; companion "
       "0x0"},
      {"<Creatives><CompanionAds><StaticResource>x</StaticResource><Tracking "
       "event='a'>x</Tracking><Companion>"
       "<StaticResource><![CDATA[u]]>\n</StaticResource><IFrameResource>x</"
       "IFrameResource><Tracking>x</Tracking>"
       "<Impression>x</Impression></Companion></CompanionAds></Creatives>",
       "; companion 0x0 resource=\n"},
      {"<Creatives><Linear/><Linear><Linear/></Linear></Creatives>", "; linear #0; linear #0"},
      {"<Creatives><Creatives><Linear/></Creatives><AdTitle>t</AdTitle><Linear/></"
       "Creatives><AdSystem>s</AdSystem>",
       " title=t system=s; linear #0"},
      {"<Creatives><Linear/></Creatives><Creatives><Linear/></Creatives>",
       "; linear #0; linear #0"},
      {"<Creatives><CompanionAds><CompanionAds><Companion/></CompanionAds><Companion/></"
       "CompanionAds></Creatives>",
       "; companion 0x0"},
      {"<Creatives><CompanionAds><Companion width='1'><Companion "
       "width='2'/></Companion></CompanionAds></Creatives>",
       "; companion 2x0"},
      {"<Creatives><Ad id='x'/></Creatives>", ""}};
  for (const auto& [content, expected] : cases) {
    const auto ads = adsOf("<VAST><Ad id='1'>" + std::string(content) + "</Ad></VAST>");
    EXPECT_EQ(ads, std::vector{"ad id=1" + std::string(expected)}) << content;
  }
}

TEST(XELVastParser, ReadsTheAdsOfADocument) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {"<VAST><Error>e</Error><AdTitle>t</AdTitle><ad/></VAST>", {}},
      {"<VAST><Ad id='1'/><Ad><AdTitle>t</AdTitle></Ad></VAST>", {"ad id=1", "ad title=t"}},
      {"<Ad id=''><AdTitle>t</AdTitle></Ad>", {"ad id= title=t"}},
      {"<V><Ad id='1'><Ad id='2'><AdTitle>t</AdTitle></Ad><AdTitle>x</AdTitle></Ad><Ad/></V>",
       {"ad id=2 title=t", "ad"}},
      {"<V><Ad id='1'/><Ad id='2'><AdTitle>t</AdTitle></V>", {"ad id=1"}},
      {"<V><Ad id='1'/><Ad><AdTitle>a & b</AdTitle></Ad><Ad/></V>", {"ad id=1"}}};
  for (const auto& [document, expected] : cases) EXPECT_EQ(adsOf(document), expected) << document;
}

TEST(XELVastParser, ADocumentCutAnywhereYieldsOnlyWholeAds) {
  std::string document = simulation::VastBuilder::typical("first").build();
  const std::string second = simulation::VastBuilder::typical("sécond").build();
  const std::size_t end = document.rfind("</Ad>") + 5;
  document.replace(end, std::string::npos, second.substr(second.find("<Ad ")));
  const auto whole = adsOf(document);
  ASSERT_EQ(whole.size(), 2u) << document;
  const std::size_t secondEnd = document.rfind("</Ad>") + 5;
  for (std::size_t length = 0; length < document.size(); ++length) {
    const std::size_t complete = length < end ? 0 : length < secondEnd ? 1 : 2;
    EXPECT_EQ(adsOf(document.substr(0, length)),
              std::vector(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(complete)))
        << length;
  }
}

TEST(XELVastParser, MayBeUsedAgain) {
  const auto parser = XELVastParser::init();
  EXPECT_EQ(parser->parseVastDocument("<V><Ad/><Ad><Creatives><CompanionAds>").size(), 1u);
  EXPECT_EQ(parser->parseVastDocument("<V><Ad/></V>").size(), 1u);
}

}  // namespace
}  // namespace xel
