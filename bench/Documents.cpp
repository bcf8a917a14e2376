#include "bench/Documents.h"

#include "xel/simulation/StreamInfoBuilder.h"
#include "xel/simulation/VastBuilder.h"

namespace xel::bench {
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

}  // namespace

std::string vastDocument(int vendors) {
  const bool small = vendors == 1;
  std::string vast =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<VAST version=\"4.0\">\n  <Ad id=\"5512\">\n"
      "    <InLine>\n      <AdSystem version=\"2\">Example</AdSystem>\n"
      "      <AdTitle>Thirty seconds</AdTitle>\n";
  for (int vendor = 0; vendor < vendors; ++vendor) {
    vast += tag("      ", "Impression", " id=\"v\"", vendorURL(vendor, "impression"));
    vast += tag("      ", "Error", "", vendorURL(vendor, "error"));
  }
  vast +=
      "      <Creatives>\n        <Creative id=\"1384\" sequence=\"1\">\n          <Linear>\n"
      "            <Duration>00:00:30</Duration>\n            <TrackingEvents>\n";
  for (const char* event : {"start", "creativeView", "firstQuartile", "midpoint", "thirdQuartile",
                            "complete", "mute", "unmute", "pause", "resume"}) {
    for (int vendor = 0; vendor < vendors; ++vendor) {
      vast += tag("              ", "Tracking", std::string(" event=\"") + event + '"',
                  vendorURL(vendor, event));
    }
  }
  vast += "            </TrackingEvents>\n            <MediaFiles>\n";
  for (int rate = 400; rate <= (small ? 400 : 4000); rate += 400) {
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
  for (int companion = 0; companion < (small ? 0 : 4); ++companion) {
    vast += "            <Companion width=\"300\" height=\"250\">\n";
    vast += tag("              ", "StaticResource", " creativeType=\"image/png\"",
                "https://media.example/creatives/companion.png");
    vast += tag("              ", "Tracking", " event=\"creativeView\"", vendorURL(0, "view"));
    vast += "            </Companion>\n";
  }
  return vast +
         "          </CompanionAds>\n        </Creative>\n      </Creatives>\n"
         "      <Extensions>\n        <Extension type=\"example\"><Data>" +
         std::string(small ? 0 : 4000, 'x') +
         "</Data></Extension>\n      </Extensions>\n    </InLine>\n  </Ad>\n</VAST>\n";
}

std::string streamInfoDocument(int breaks, const std::string& vast) {
  auto builder = simulation::StreamInfoBuilder::vod();
  for (int i = 0; i < breaks; ++i) {
    const std::string key = std::to_string(i);
    builder.addBreak("break-" + key, i * 100.0);
    for (const char* ad : {"-a", "-b", "-c"}) {
      const std::string adKey = "ad-" + key + ad;
      builder.addAd(adKey, 10.5,
                    vast.empty() ? simulation::VastBuilder::typical(adKey).build() : vast);
    }
  }
  return builder.build();
}

}  // namespace xel::bench
