// What this machine is against what its own tools say.

#include "vantile/sysinfo/system_info.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <set>
#include <sstream>

#include "vantile/platform/parsers/firmware_text.h"

#include "live/command.h"

namespace vantile {
namespace {

using testing::run;

/// The first line that a command prints; nothing where it fails or prints none.
std::optional<std::string> lineFrom(const std::string& command) {
  const auto output = run("{ " + command + "; }");
  const auto line = output.text.substr(0, output.text.find('\n'));
  return output.status == 0 && !line.empty() ? std::optional(line) : std::nullopt;
}

/// What lscpu says under a label.
std::optional<std::string> lscpu(const std::string& label) {
  std::istringstream lines(run("LC_ALL=C lscpu").text);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(label + ":")) continue;
    const auto value = line.find_first_not_of(" \t", label.size() + 1);
    return value == std::string::npos ? "" : line.substr(value);
  }
  return std::nullopt;
}

/// How many different pairs of core and socket lscpu lists; 0 where it does not.
std::size_t coresOfLscpu() {
  const auto output = run("lscpu -p=CORE,SOCKET");
  std::set<std::string> cores;
  std::istringstream lines(output.status == 0 ? output.text : "");
  for (std::string line; std::getline(lines, line);)
    if (!line.starts_with('#')) cores.insert(line);
  return cores.size();
}

const KVDSystemInfo& info() {
  static const auto info = KVDSystemInfo::init();
  return *info;
}

TEST(LiveSystemInfo, TheHostNameIsUnames) {
  EXPECT_EQ(info().sysName(), lineFrom("uname -n"));
  if (const auto name = lineFrom("hostname")) {
    EXPECT_EQ(info().sysName(), name);
  }
}

TEST(LiveSystemInfo, TheComputersNameIsThePrettyOneOrTheHostName) {
  const auto pretty = lineFrom(". /etc/machine-info && printf %s \"$PRETTY_HOSTNAME\"");
  EXPECT_EQ(info().computerName(), pretty ? pretty : lineFrom("uname -n"));
}

TEST(LiveSystemInfo, TheUsersNamesAreThoseOfGetent) {
  const auto entry = lineFrom("getent passwd " + std::to_string(::getuid()));
  if (!entry) GTEST_SKIP() << "the user that runs this has no account";
  std::istringstream fields(*entry);
  std::string name, gecos;
  std::getline(fields, name, ':');
  for (int skipped = 0; skipped < 3; ++skipped) std::getline(fields, gecos, ':');
  std::getline(fields, gecos, ':');
  EXPECT_EQ(info().sysUserName(), name);
  const auto full = gecos.substr(0, gecos.find(','));
  if (full.find('&') != std::string::npos) GTEST_SKIP() << "an abbreviated full name";
  EXPECT_EQ(info().sysFullUserName(), full.empty() ? name : full);
}

TEST(LiveSystemInfo, TheVersionIsWhatAShellReadsInOsRelease) {
  const auto pretty = lineFrom(". /etc/os-release && printf %s \"$PRETTY_NAME\"");
  if (!pretty) GTEST_SKIP() << "no /etc/os-release with a pretty name";
  EXPECT_EQ(info().sysOSVersion(), pretty);
}

TEST(LiveSystemInfo, ReleaseAndBuildAreUnames) {
  EXPECT_EQ(info()._strControlEntry("kern.osrelease"), lineFrom("uname -r"));
  EXPECT_EQ(info()._strControlEntry("kern.osversion"), lineFrom("uname -v"));
}

TEST(LiveSystemInfo, MemoryIsMeminfosTotal) {
  const auto kibibytes = lineFrom("awk '/^MemTotal:/ { print $2 }' /proc/meminfo");
  ASSERT_TRUE(kibibytes);
  EXPECT_EQ(info().sysPhysicalMemory(), std::stoull(*kibibytes) * 1024);
}

TEST(LiveSystemInfo, TheBrandIsLscpusModelName) {
  const auto model = lscpu("Model name");
  const auto brand = info()._strControlEntry("machdep.cpu.brand_string");
  if (!model || !brand) GTEST_SKIP() << "lscpu or the kernel names no model";
  EXPECT_EQ(brand, model);
  EXPECT_EQ(info().sysProcessorName(), info()._parseBrandName(model));
}

TEST(LiveSystemInfo, PhysicalProcessorsAreLscpusCores) {
  const auto cores = coresOfLscpu();
  if (cores == 0) GTEST_SKIP() << "no lscpu";
  EXPECT_EQ(info().sysProcessorCount(), cores);
}

TEST(LiveSystemInfo, TheSpeedIsThatOfARealProcessor) {
  if (!info().sysProcessorSpeed()) GTEST_SKIP() << "the kernel tells no rate";
  const std::string cpufreq = "cat /sys/devices/system/cpu/cpu0/cpufreq/";
  auto kilohertz = lineFrom(cpufreq + "base_frequency");
  if (!kilohertz) kilohertz = lineFrom(cpufreq + "cpuinfo_max_freq");
  if (kilohertz) {
    EXPECT_EQ(info().sysProcessorSpeed(), std::stoull(*kilohertz) * 1000);
  } else {
    const auto megahertz = lineFrom("awk '/^cpu MHz/ { print $4; exit }' /proc/cpuinfo");
    ASSERT_TRUE(megahertz);  // what the kernel gives changes while it runs
    EXPECT_NEAR(static_cast<double>(*info().sysProcessorSpeed()), std::stod(*megahertz) * 1e6, 1e8);
  }
}

TEST(LiveSystemInfo, SerialNumberIdentifierAndModelAreFirmwaresOrNil) {
  const std::pair<const char*, KVDSystemInfo::Text> properties[] = {
      {"product_serial", info().sysSerialNumber()},
      {"product_uuid", info().sysUUID()},
      {"product_name", info().sysModelID()}};
  for (const auto& [file, value] : properties) {
    const auto path = std::string("/sys/class/dmi/id/") + file;
    const auto told = lineFrom("sed 's/[[:space:]]*$//' " + path);
    if (told && firmwareText(*told)) {
      EXPECT_EQ(value, told) << file;
    }
    if (!told && ::access("/sys/firmware/devicetree/base", F_OK) != 0) {
      EXPECT_EQ(value, std::nullopt) << file;
    }
  }
}

TEST(LiveSystemInfo, ThereIsNoConstantForTheSystem) {
  EXPECT_EQ(info().sysOSName(), std::nullopt);
}

}  // namespace
}  // namespace vantile
