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

struct ElementCase {
  std::string content, expected;
};

TEST(XELVastParser, ReadsTheElementsOfAnAd) {
  const ElementCase cases[] = {
      {"<AdSystem>s</AdSystem>\n<AdTitle>t</AdTitle>\n<Description>d</Description>\n",
       " title=t system=s description=d"},
      {"<InLine><Extensions><AdTitle>t</AdTitle></Extensions></InLine>", " title=t"},
      {"<adtitle>t</adtitle><AdTitles>t</AdTitles><x:AdTitle>t</x:AdTitle>", ""},
      {"<AdTitle>one</AdTitle><AdTitle>two</AdTitle><AdTitle></AdTitle>", " title=two"},
      {"<AdTitle>a&amp;b</AdTitle><AdSystem>b&lt;</AdSystem>", " title=b system=<"},
      {"<AdTitle>\n<![CDATA[t]]>\n </AdTitle><AdSystem> <![CDATA[]]></AdSystem>",
       " title=\n  system="},
      {"<AdTitle>a<b>c</b>d</AdTitle><AdSystem><b/>s</AdSystem>", " title=a"},
      {"<AdTitle>Größe 漢字 — 😀 und mehr</AdTitle>", " title=Größe 漢字 — 😀 und mehr"},
      {"<Description>one\r\n  été\n</Description>", " description=one\n  été\n"},
      {"<Impression>u</Impression>\n<Error>e</Error>\n<Impression>u</Impression>\n",
       " error:[e] start:[u][u]"},
      {"<Impression>\n <![CDATA[u?a&b]]>\n</Impression>", " start:[\n ][u?a&b][\n]"},
      {"<Impression>u?a&amp;b</Impression>", " start:[u?a][&][b]"},
      {"<Tracking event='firstQuartile'>q</Tracking><Tracking event='X-Y'>x</Tracking>",
       " firstquartile:[q] x-y:[x]"},
      {"<Error>e</Error><Tracking>lost</Tracking><Tracking Event='start'>x</Tracking>",
       " error:[e]"},
      {"<Creatives/><AdTitle>t</AdTitle>", " title=t"},
      {"<Creatives><Linear/></Creatives><Creatives><Linear/></Creatives>",
       "; linear #0; linear #0"}};
  for (const auto& [content, expected] : cases) {
    EXPECT_EQ(adsOf("<VAST><Ad id='1'>" + content + "</Ad></VAST>"),
              std::vector{"ad id=1" + expected})
        << content;
  }
}

TEST(XELVastParser, ReadsTheElementsOfCreatives) {
  const ElementCase cases[] = {
      {"<Creative id='c' sequence='2'><Linear/></Creative><Creative><Linear/></Creative>",
       "; linear id=c #2; linear #0"},
      {"<Linear><Tracking event='Start'>s</Tracking>\n</Linear>\n", "; linear #0 start:[s]"},
      {"<Creative id='c' sequence='2'><UniversalAdId>u</UniversalAdId></Creative><Linear/>",
       "; linear #0"},
      {"<Creative sequence='+3x'><Linear/></Creative><Creative sequence='x3'><Linear/></Creative>",
       "; linear #3; linear #0"},
      {"<Linear><Impression>i</Impression><Error> <![CDATA[e]]></Error></Linear>",
       "; linear #0 error:[ ][e] start:[i]"},
      {"<Error>x</Error><NonLinearAds><Tracking event='a'>x</Tracking></NonLinearAds>", ""},
      {"<UniversalAdId idRegistry='r'>  X1 \n</UniversalAdId><Linear/>",
       "; linear #0 universal=X1 registry=r"},
      {"<UniversalAdId idValue='A'>X1</UniversalAdId><Linear/>", "; linear #0 universal=A"},
      {"<UniversalAdId>\n <![CDATA[\tfirst\n]]>second</UniversalAdId><Linear/>",
       "; linear #0 universal=first"},
      {"<UniversalAdId idValue='A' idRegistry='r'/><UniversalAdId>B</UniversalAdId><Linear/>",
       "; linear #0 universal=B"},
      {"<Creative><Linear/><UniversalAdId>late</UniversalAdId></Creative><Linear/>",
       "; linear #0; linear #0"},
      {"<CompanionAds><Companion width='300' height='250' apiFramework='x'><StaticResource>u"
       "</StaticResource>\n<Tracking event='A'>v</Tracking>\n</Companion></CompanionAds><Linear/>",
       "; linear #0; companion 300x250 api=x resource=u a:[v]"},
      {"<CompanionAds><Companion height='1e2'/></CompanionAds><CompanionAds/><CompanionAds>"
       "<Companion width='w'/></CompanionAds>",
       "; companion 0x1; companion 0x0"},
      {"<CompanionAds><StaticResource>x</StaticResource><Tracking event='a'>x</Tracking><Companion>"
       "<StaticResource><![CDATA[u]]>\n</StaticResource><Tracking>x</Tracking><Error>x</Error>"
       "</Companion></CompanionAds>",
       "; companion 0x0 resource=\n"},
      {"<Linear/><Linear><Linear/></Linear>", "; linear #0; linear #0"},
      {"<Creatives><Linear/></Creatives><Linear/><AdTitle>t</AdTitle>", " title=t; linear #0"},
      {"<CompanionAds><CompanionAds><Companion/></CompanionAds><Companion/></CompanionAds>",
       "; companion 0x0"},
      {"<CompanionAds><Companion width='1'><Companion width='2'/></Companion></CompanionAds>",
       "; companion 2x0"},
      {"<Ad id='x'/>", ""}};
  for (const auto& [content, expected] : cases) {
    EXPECT_EQ(adsOf("<Ad><Creatives>" + content + "</Creatives></Ad>"),
              std::vector{"ad" + expected})
        << content;
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
