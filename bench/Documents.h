#pragma once

#include <string>

namespace xel::bench {

/// One inline ad as servers write it: indented, some vendors on every event, media files,
/// companions and an extension. 1 vendor and little else are 4 KB; 6, 80 and 830 vendors make it
/// 30 KB, 300 KB and 3 MB.
std::string vastDocument(int vendors);

/// An on-demand stream info document of breaks of three ads, 100 s apart: "break-0" with "ad-0-a",
/// "ad-0-b" and "ad-0-c", and so on. 333 of them are 2 MB.
/// @param vast of each ad; empty for the usual ones of 1.8 KB.
std::string streamInfoDocument(int breaks, const std::string& vast = {});

}  // namespace xel::bench
