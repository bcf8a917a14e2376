#include "report/ReportPage.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "report/ReportJSON.h"

// The page that the build has made, as it is.
__asm__(
    ".pushsection .rodata\n"
    ".hidden xelReportPage\n"
    ".global xelReportPage\n"
    "xelReportPage:\n"
    ".incbin \"" XEL_REPORT_PAGE
    "\"\n"
    ".hidden xelReportPageEnd\n"
    ".global xelReportPageEnd\n"
    "xelReportPageEnd:\n"
    ".byte 0\n"
    ".popsection\n");

extern "C" {
extern const char xelReportPage[];     // NOLINT(modernize-avoid-c-arrays)
extern const char xelReportPageEnd[];  // NOLINT(modernize-avoid-c-arrays)
}

namespace xel::report {

std::string pageOf(const Report& report) {
  constexpr std::string_view placeOfData = "{\"report\":\"here\"}";
  const std::string_view page(xelReportPage,
                              static_cast<std::size_t>(xelReportPageEnd - xelReportPage));
  const auto place = page.find(placeOfData);
  auto filled = std::string(page.substr(0, place));
  filled += toJSON(report);
  filled += page.substr(place + placeOfData.size());
  return filled;
}

}  // namespace xel::report
