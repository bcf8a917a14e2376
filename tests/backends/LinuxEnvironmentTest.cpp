#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include "xel/platform/Log.h"
#include "xel/platform/Platform.h"

#include "backends/linux/LinuxEnvironment.h"

namespace xel {
namespace {

/// The facts of a system with no files at first.
class SystemFactsTest : public testing::Test {
 protected:
  ~SystemFactsTest() override { std::filesystem::remove_all(root_); }
  void write(const std::filesystem::path& file, const std::string& text) const {
    std::filesystem::create_directories((root_ / file).parent_path());
    std::ofstream(root_ / file) << text;
  }
  SystemFacts facts() const { return SystemFacts::read(root_); }

 private:
  std::string name_ = std::filesystem::temp_directory_path() / "xel-root-XXXXXX";
  const std::filesystem::path root_ = mkdtemp(name_.data());
};

TEST_F(SystemFactsTest, ReadsTheOperatingSystemFromItsReleaseFile) {
  const struct {
    const char* file;
    std::optional<std::string> name, version;
  } cases[] = {
      {"PRETTY_NAME=\"A B\"\nID=debian\nID_LIKE=x\nVERSION_ID=\"12\"\n", "debian", "12"},
      {"# ID=no\nVERSION_ID='4.1'\r\nID=\"tv\\\"os\" \n", "tv\"os", "4.1"},
      {"ID=one\nID=two\n=\nVERSION_ID=\"\"\nID", "two", {}},
      {"", "linux", {}},
  };
  write("usr/lib/os-release", "ID=vendor\nVERSION_ID=0\n");
  EXPECT_EQ(facts().operatingSystemName, "vendor");
  for (const auto& [file, name, version] : cases) {
    write("etc/os-release", file);
    EXPECT_EQ(facts().operatingSystemName, name) << file;
    EXPECT_EQ(facts().operatingSystemVersion, version) << file;
  }
}

TEST_F(SystemFactsTest, FallsBackFromDeviceTreeToFirmwareToKernel) {
  utsname kernel{};
  ASSERT_EQ(uname(&kernel), 0);
  EXPECT_EQ(facts().operatingSystemName, kernel.sysname);
  EXPECT_EQ(facts().operatingSystemVersion, kernel.release);
  EXPECT_EQ(facts().hardwareModel, kernel.machine);
  write("sys/class/dmi/id/product_name", "Box 3\n");
  write("proc/device-tree/model", std::string("\0", 1));
  EXPECT_EQ(facts().hardwareModel, "Box 3");
  write("proc/device-tree/model", std::string("Maker Model B\0", 14));
  EXPECT_EQ(facts().hardwareModel, "Maker Model B");
}

TEST(LinuxEnvironmentTest, AnAdvertisingIdentifierMustBeAUUID) {
  const std::string good = "0AF1B2C3-0000-4000-8000-0123456789AB";
  const auto environmentWith = [](const std::optional<std::string>& identifier) {
    return makeLinuxEnvironment({std::nullopt, std::nullopt, identifier, true});
  };
  EXPECT_EQ(environmentWith("0af1b2c3-0000-4000-8000-0123456789ab")->advertisingIdentifier(), good);
  EXPECT_TRUE(environmentWith(good)->isAdvertisingTrackingEnabled());
  const std::optional<std::string> bad[] = {{},
                                            "",
                                            good + "c",
                                            "0af1b2c3-0000-4000-8000-0123456789ag",
                                            "0af1b2c3000004000-8000-0123456789abcd",
                                            "0af1b2c3-0000-4000-800-00123456789ab"};
  for (const auto& identifier : bad) {
    const auto environment = environmentWith(identifier);
    EXPECT_EQ(environment->advertisingIdentifier(), "00000000-0000-0000-0000-000000000000");
    EXPECT_FALSE(environment->isAdvertisingTrackingEnabled());
  }
}

TEST(LinuxEnvironmentTest, TheDefaultPlatformCarriesTheHostsFactsAndReportsABadIdentifierOnce) {
  testing::internal::CaptureStderr();
  const auto platform = Platform::makeDefault({.host = {"com.example.player", {}, "a\nb", true}});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "The advertising identifier is not a UUID; continuing without one, with "
            "tracking off.\n");
  EXPECT_EQ(platform.environment->applicationIdentifier(), "com.example.player");
  EXPECT_NE(platform.environment->libraryVersion().value_or(""), "");
  EXPECT_TRUE(platform.http && platform.mainRunLoop);
}

TEST(StandardErrorLogTest, WritesEachLineWithoutControlCharacters) {
  testing::internal::CaptureStderr();
  makeStandardErrorLog()->line(
      std::string_view("é–\xF0\x9F\x93\xBA\x1B[2J\nb\r\t\x7F\xC2\x9B\0\xC2", 22));
  makeStandardErrorLog()->line("");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "é–\xF0\x9F\x93\xBA?[2J?b?????\xC2\n\n");
}

}  // namespace
}  // namespace xel
