#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include "xel/platform/Log.h"
#include "xel/platform/Platform.h"

#include "backends/linux/LinuxEnvironment.h"

namespace xel {
namespace {

/// Some files of a system's root, in a folder that goes with it.
class Root {
 public:
  Root() {
    std::string name = std::filesystem::temp_directory_path() / "xel-root-XXXXXX";
    folder_ = mkdtemp(name.data());
  }
  ~Root() { std::filesystem::remove_all(folder_); }
  void write(const std::filesystem::path& file, const std::string& text) const {
    std::filesystem::create_directories((folder_ / file).parent_path());
    std::ofstream(folder_ / file) << text;
  }
  SystemFacts facts() const { return SystemFacts::read(folder_); }

 private:
  std::filesystem::path folder_;
};

TEST(SystemFactsTest, ReadsTheOperatingSystemFromItsReleaseFile) {
  using Optional = std::optional<std::string>;
  const struct {
    const char* file;
    Optional name, version;
  } cases[] = {
      {"PRETTY_NAME=\"A B\"\nID=debian\nID_LIKE=x\nVERSION_ID=\"12\"\n", "debian", "12"},
      {"# ID=no\nVERSION_ID='4.1'\r\nID=\"tv\\\"os\" \n", "tv\"os", "4.1"},
      {"ID=rolling\nVERSION_ID=\"\"", "rolling", {}},
      {"ID=one\nID=two\n=\n\nID", "two", {}},
      {"", "linux", {}},
  };
  for (const auto& [file, name, version] : cases) {
    const Root root;
    root.write("usr/lib/os-release", "ID=vendor\nVERSION_ID=0\n");
    EXPECT_EQ(root.facts().operatingSystemName, "vendor");
    root.write("etc/os-release", file);
    EXPECT_EQ(root.facts().operatingSystemName, name) << file;
    EXPECT_EQ(root.facts().operatingSystemVersion, version) << file;
  }
}

TEST(SystemFactsTest, FallsBackFromDeviceTreeToFirmwareToKernel) {
  const Root root;
  utsname kernel{};
  ASSERT_EQ(uname(&kernel), 0);
  EXPECT_EQ(root.facts().operatingSystemName, kernel.sysname);
  EXPECT_EQ(root.facts().operatingSystemVersion, kernel.release);
  EXPECT_EQ(root.facts().hardwareModel, kernel.machine);
  root.write("sys/class/dmi/id/product_name", "Box 3\n");
  EXPECT_EQ(root.facts().hardwareModel, "Box 3");
  root.write("proc/device-tree/model", std::string("\0", 1));
  EXPECT_EQ(root.facts().hardwareModel, "Box 3");
  root.write("proc/device-tree/model", std::string("Maker Model B\0", 14));
  EXPECT_EQ(root.facts().hardwareModel, "Maker Model B");
}

TEST(LinuxEnvironmentTest, AnAdvertisingIdentifierMustBeAUUID) {
  const std::string none = "00000000-0000-0000-0000-000000000000";
  const std::string good = "0AF1B2C3-0000-4000-8000-0123456789AB";
  const std::pair<std::optional<std::string>, std::string> cases[] = {
      {"0af1b2c3-0000-4000-8000-0123456789ab", good},
      {good, good},
      {std::nullopt, none},
      {"", none},
      {"0af1b2c3-0000-4000-8000-0123456789abc", none},
      {"0af1b2c3-0000-4000-8000-0123456789ag", none},
      {"0af1b2c3000004000-8000-0123456789abcd", none},
      {"{af1b2c3-0000-4000-8000-0123456789a}", none},
      {"0af1b2c3-0000-4000-800-00123456789ab", none},
  };
  for (const auto& [given, sent] : cases) {
    const auto environment = makeLinuxEnvironment({std::nullopt, std::nullopt, given, true});
    EXPECT_EQ(environment->advertisingIdentifier(), sent);
    EXPECT_EQ(environment->isAdvertisingTrackingEnabled(), sent == good);
  }
}

TEST(LinuxEnvironmentTest, TheDefaultPlatformCarriesTheHostsFactsAndReportsABadIdentifierOnce) {
  testing::internal::CaptureStderr();
  const Platform platform =
      Platform::makeDefault({.host = {"com.example.player", {}, "a\nb", true}});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "The advertising identifier \"a?b\" is not a UUID; continuing without one, with "
            "tracking off.\n");
  EXPECT_EQ(platform.environment->applicationIdentifier(), "com.example.player");
  EXPECT_EQ(platform.environment->applicationVersion(), std::nullopt);
  EXPECT_NE(platform.environment->libraryVersion().value_or(""), "");
  EXPECT_TRUE(platform.http && platform.mainRunLoop);
}

TEST(StandardErrorLogTest, WritesEachLineWithoutControlCharacters) {
  testing::internal::CaptureStderr();
  const auto log = makeStandardErrorLog();
  log->line("plain é – \xF0\x9F\x93\xBA");
  log->line(
      std::string_view("\x1B[2J a\nb\r\tc\x7F\xC2\x9B"
                       "d\0\xC2",
                       17));
  log->line("");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "plain é – \xF0\x9F\x93\xBA\n?[2J a?b??c??d?\xC2\n\n");
}

}  // namespace
}  // namespace xel
