#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "common/TemporaryFolder.h"
#include "play/TraceFile.h"
#include "replay/ReplayCommand.h"

namespace xel {
namespace {

TEST(ReplayCommand, SaysInOneLineWhatCameOfIt) {
  const std::string first =
      R"({"trace":"xel","version":1,"request":{"type":"live","assetKey":"a"}})"
      "\n";
  const std::string request =
      R"({"t":0,"kind":"httpRequest","id":1,"method":"POST","url":"https:///ssai/event/a/streams",)"
      R"("headers":[["User-Agent","XELtvOS/t.(null) (null)/(null) (null)/"]],"body":)"
      R"("correlator=1&url=(null)&is_lat=1&rdid=&idtype=tvOS&sdkv=t.(null)/(null)&submodel=(null))"
      R"(&attempt_preroll=false","timeout":5})"
      "\n";
  const std::string result =
      R"({"t":1,"kind":"httpResult","id":1,"status":500,"headers":[],"body":"b"})"
      "\n";
  const std::string call =
      R"({"t":1,"kind":"delegate","call":"didReceiveError","error":{"domain":"XELHttpError",)"
      R"("code":500,"description":"Stream initialization failed: b","underlying":null}})"
      "\n";
  const std::string end = R"({"t":1,"kind":"end","exitStatus":1})";
  const std::string error = "didReceiveError Stream initialization failed: b";
  struct {
    std::string trace, option;
    int exitStatus;
    std::string out, err;
  } const cases[] = {
      {first + request + result + call + end, "", 0, "identical: 1 delegate call, 0 pings\n", ""},
      {first + request + result + call, "--json", 0,
       R"({"identical":true,"delegateCalls":1,"pings":0,"differenceCount":0,"differences":[],)"
       "\"isCutOff\":false}\n",
       ""},
      {first + request + result + end, "", 1, "line 4: expected nothing, got " + error + "\n", ""},
      {first + request + result, "", 0, "identical: 0 delegate calls, 0 pings\n", ""},
      {first + request + result + call + call + end, "", 1,
       "line 5: expected " + error + ", got nothing\n", ""},
      {first + request + result + std::string(call).replace(call.find("500"), 3, "501") + end, "",
       1,
       "line 4: expected " + error + " with error.code 501, got " + error +
           " with error.code 500\n",
       ""},
      {first + request + result + call + "{\"t\":", "", 0, "identical: 1 delegate call, 0 pings\n",
       "xel: FILE, line 5, is cut off; replayed up to there\n"},
      {"", "", 2, "",
       "xel: FILE is empty; a trace begins with a line about the session, so record it again\n"},
  };
  const TemporaryFolder folder;
  const auto file = folder.path() / "trace.jsonl";
  for (const auto& [trace, option, exitStatus, out, err] : cases) {
    SCOPED_TRACE(trace);
    std::ofstream(file, std::ios::binary) << trace;
    CLI::App app;
    int status = -1;
    registerReplay(app, status);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    app.parse("replay " + file.string() + " " + option);
    EXPECT_EQ(status, exitStatus);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), out);
    auto told = testing::internal::GetCapturedStderr();
    if (!told.empty()) told.replace(told.find(file.string()), file.string().size(), "FILE");
    EXPECT_EQ(told, err);
  }
}

TEST(TraceFile, TellsOnceThatItCannotBeWritten) {
  for (const char* path : {"/dev/full", "/nowhere/trace.jsonl"}) {
    testing::internal::CaptureStderr();
    TraceFile file(path);
    file.write("a\n");
    file.write("b\n");
    const auto told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(told.find("xel: the session is not recorded: " + std::string(path)), 0u) << told;
    EXPECT_EQ(told.find('\n'), told.size() - 1);
  }
}

}  // namespace
}  // namespace xel
