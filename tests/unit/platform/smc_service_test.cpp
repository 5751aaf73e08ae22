#include "vantile/platform/linux/smc_service.h"

#include <gtest/gtest.h>

#include "vantile/platform/posix/files.h"

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

/// Runs what it is given at once, so that a test waits for nothing.
class SameThread final : public Threads {
 public:
  bool detach(const char*, std::function<void()> body) override {
    if (!stuck) body();
    return true;
  }
  bool stuck = false;
};

/// A machine whose /sys stands in a temporary folder. Devices are linked to, as there.
struct LinuxSmcServiceTest : ::testing::Test {
  LinuxSmcServiceTest() { folder.folder("sys/class/hwmon"), folder.folder("sys/class/thermal"); }

  TimedRead::Means means() const {
    TimedRead::Means means;
    means.read = [](const std::string& path) { return contentsOf(path, 64); };
    means.now = [] { return TimedRead::Clock::time_point(); };  // every answer comes in time
    means.threads = threads;
    means.patience = std::chrono::milliseconds(1);
    return means;
  }
  void chip(const std::string& hwmon, const std::string& device, const std::string& name) {
    folder.file("sys/devices/" + device + "/" + hwmon + "/name", name + "\n");
    folder.symbolicLink("sys/class/hwmon/" + hwmon,
                        folder.path("sys/devices/" + device + "/" + hwmon));
  }
  void input(const std::string& place, const std::string& label, const std::string& millidegrees) {
    if (!label.empty()) folder.file("sys/" + place + "_label", label + "\n");
    folder.file("sys/" + place + "_input", millidegrees + "\n");
  }
  void coretemp(const std::string& millidegrees) {
    if (!std::filesystem::exists(folder.path("sys/class/hwmon/hwmon2")))
      chip("hwmon2", "coretemp.0", "coretemp");
    input("devices/coretemp.0/hwmon2/temp2", "Core 0", "31000");
    input("devices/coretemp.0/hwmon2/temp1", "Package id 0", millidegrees);
  }
  void zone(const std::string& name, const std::string& type, const std::string& millidegrees) {
    folder.file("sys/class/thermal/" + name + "/type", type + "\n");
    folder.file("sys/class/thermal/" + name + "/temp", millidegrees + "\n");
  }

  /// One key as the sensor functions read it: opened, asked for its bytes, closed.
  std::optional<double> read(std::uint32_t key = packed("TC0P")) {
    const auto opening = service.open();
    if (!opening.found) return std::nullopt;
    SMCRecord in = {}, out = {};
    in.key = key;
    in.command = smc::readBytes;
    std::size_t size = sizeof out;
    const auto result = service.call(opening.connection, 2, in, out, size);
    EXPECT_EQ(service.close(opening.connection), 0);
    if (result != 0) return std::nullopt;
    const int raw =
        static_cast<std::int8_t>(out.bytes[0]) * 256 + static_cast<std::int8_t>(out.bytes[1]);
    return (raw >> 2) * 0.015625;
  }

  TemporaryFolder folder;
  const std::shared_ptr<SameThread> threads = std::make_shared<SameThread>();
  LinuxSmcService service{LinuxRoots{folder.path("proc"), folder.path("sys")}, TimedRead(means())};
};

TEST_F(LinuxSmcServiceTest, ASensorThatCanNotBeReadLeavesItToTheNextBest) {
  coretemp("48000");
  folder.remove("sys/devices/coretemp.0/hwmon2/temp1_input");
  folder.folder("sys/devices/coretemp.0/hwmon2/temp1_input");
  zone("thermal_zone0", "x86_pkg_temp", "51000");
  EXPECT_EQ(read(), 51);
  EXPECT_EQ(read(), 51);
}

TEST_F(LinuxSmcServiceTest, AnswersFromTheProcessorsPackage) {
  chip("hwmon0", "nvme", "nvme");
  input("devices/nvme/hwmon0/temp1", "Composite", "20000");
  coretemp("57500");
  EXPECT_EQ(read(), 57.5);
  coretemp("58250");
  EXPECT_EQ(read(), 58.25);
}

TEST_F(LinuxSmcServiceTest, WithoutASensorThereIsNoService) {
  chip("hwmon0", "nvme", "nvme");
  input("devices/nvme/hwmon0/temp1", "Composite", "20000");
  zone("thermal_zone0", "acpitz", "27800");
  const auto opening = service.open();
  EXPECT_EQ(opening.matching, 0);
  EXPECT_FALSE(opening.found);
}

TEST_F(LinuxSmcServiceTest, WithoutSysThereIsNoService) {
  folder.remove("sys");
  EXPECT_FALSE(service.open().found);
}

TEST_F(LinuxSmcServiceTest, AZoneAnswersWhereThereIsNoChip) {
  zone("thermal_zone0", "acpitz", "27800");
  zone("thermal_zone1", "x86_pkg_temp", "61000");
  EXPECT_EQ(read(), 61);
}

TEST_F(LinuxSmcServiceTest, AnOlderDriversFilesStandInTheDevice) {
  folder.file("sys/devices/k10/name", "k10temp\n");
  input("devices/k10/temp1", "", "45500");
  folder.folder("sys/class/hwmon/hwmon0");
  folder.symbolicLink("sys/class/hwmon/hwmon0/device", folder.path("sys/devices/k10"));
  EXPECT_EQ(read(), 45.5);
}

TEST_F(LinuxSmcServiceTest, ApplesmcAnswersForAllItsTemperatures) {
  folder.file("sys/devices/applesmc.768/name", "applesmc\n");
  input("devices/applesmc.768/temp1", "TA0P", "21000");
  input("devices/applesmc.768/temp12", "TC0P", "49000");
  folder.folder("sys/class/hwmon/hwmon0");
  folder.symbolicLink("sys/class/hwmon/hwmon0/device", folder.path("sys/devices/applesmc.768"));
  coretemp("57000");
  EXPECT_EQ(read(), 49);
  EXPECT_EQ(read(packed("TA0P")), 21);
}

TEST_F(LinuxSmcServiceTest, OutOfZeroTo127DegreesIsNoReading) {
  coretemp("127000");
  EXPECT_EQ(read(), 127);
  for (const char* text : {"127001", "-1", "-40000", "99999999999999999999", "", "x", "\xFF"}) {
    coretemp(text);
    EXPECT_EQ(read(), std::nullopt) << text;
  }
  coretemp("0");
  EXPECT_EQ(read(), 0);
}

TEST_F(LinuxSmcServiceTest, ASensorThatDoesNotAnswerIsNoReadingAndIsKept) {
  coretemp("50000");
  threads->stuck = true;
  EXPECT_TRUE(service.open().found);
  EXPECT_EQ(read(), std::nullopt);
  EXPECT_EQ(read(), std::nullopt);
  EXPECT_TRUE(service.open().found);
}

TEST_F(LinuxSmcServiceTest, ASensorThatIsGoneIsLookedForAgainAtOnce) {
  coretemp("50000");
  EXPECT_EQ(read(), 50);
  folder.remove("sys/devices/coretemp.0");
  folder.remove("sys/class/hwmon/hwmon2");
  chip("hwmon5", "coretemp.1", "coretemp");
  input("devices/coretemp.1/hwmon5/temp1", "Package id 0", "51000");
  EXPECT_EQ(read(), std::nullopt);
  EXPECT_EQ(read(), 51);
}

TEST_F(LinuxSmcServiceTest, AnotherDeviceUnderTheNameOfOneThatIsGoneIsNotTakenForIt) {
  coretemp("50000");
  EXPECT_EQ(read(), 50);
  folder.remove("sys/devices/coretemp.0");
  folder.remove("sys/class/hwmon/hwmon2");
  chip("hwmon2", "nvme", "nvme");
  input("devices/nvme/hwmon2/temp1", "Composite", "20000");
  EXPECT_EQ(read(), std::nullopt);
  EXPECT_FALSE(service.open().found);
}

TEST_F(LinuxSmcServiceTest, ASensorThatComesLaterIsFoundBeforeLong) {
  EXPECT_FALSE(service.open().found);
  coretemp("50000");
  EXPECT_FALSE(service.open().found);  // not looked for each time
  int opens = 1;
  while (!service.open().found && opens < 1000) ++opens;
  EXPECT_GE(opens, 32);
  EXPECT_LE(opens, 64);
}

TEST_F(LinuxSmcServiceTest, OneThatNeverAnsweredIsNotLookedForEachTime) {
  coretemp("50000");
  folder.remove("sys/devices/coretemp.0/hwmon2/temp1_input");
  folder.symbolicLink("sys/devices/coretemp.0/hwmon2/temp1_input", folder.path("nowhere"));
  EXPECT_EQ(read(), std::nullopt);
  EXPECT_FALSE(service.open().found);
}

TEST_F(LinuxSmcServiceTest, AClosedConnectionTakesNoCalls) {
  coretemp("50000");
  const auto connection = service.open().connection;
  EXPECT_NE(connection, 0u);
  EXPECT_EQ(service.close(connection), 0);
  SMCRecord in = {}, out = {};
  std::size_t size = sizeof out;
  EXPECT_EQ(service.call(connection, 2, in, out, size), smc::notOpen);
  EXPECT_EQ(service.close(connection), smc::notOpen);
}

TEST_F(LinuxSmcServiceTest, ConnectionsAreClosedEachByItself) {
  coretemp("50000");
  const auto one = service.open().connection, other = service.open().connection;
  EXPECT_NE(one, other);
  EXPECT_EQ(service.close(one), 0);
  EXPECT_EQ(service.close(one), smc::notOpen);
  EXPECT_EQ(service.close(other), 0);
}

TEST_F(LinuxSmcServiceTest, AnAnswerNeedsRoomForARecord) {
  coretemp("50000");
  const auto connection = service.open().connection;
  SMCRecord in = {}, out = {};
  in.command = smc::readKeyInfo;
  in.key = packed("TC0P");
  std::size_t size = 79;
  EXPECT_EQ(service.call(connection, 2, in, out, size), smc::badArgument);
  size = 200;
  EXPECT_EQ(service.call(connection, 2, in, out, size), 0);
  EXPECT_EQ(size, 80u);
}

}  // namespace
}  // namespace vantile
