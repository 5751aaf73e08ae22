// Labels of devices that umockdev puts before a program of its own.

#include "vantile/platform/linux/volume_label.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "fakes/temporary_folder.h"
#include "live/command.h"
#include "live/label_helper.h"
#include "live/sanitized.h"

namespace vantile {

int testing::runLabelHelper(const char* major, const char* minor) {
  MountedVolume volume;
  volume.mount.device = {std::strtoull(major, nullptr, 10), std::strtoull(minor, nullptr, 10)};
  volume.mayHang = true;  // so that nobody else is asked
  std::printf("%s\n", labelOf(volume).value_or("none").c_str());
  return 0;
}

namespace {

using testing::run;

struct LiveVolumeLabel : ::testing::Test {
  void SetUp() override {
    if (testing::sanitized) GTEST_SKIP() << "what umockdev preloads comes before the sanitizer";
    if (run("umockdev-run --version").status != 0) GTEST_SKIP() << "no umockdev";
  }

  /// The label of the device 8:240 where udev knows those properties of it.
  std::string labelWith(const std::string& properties) const {
    const auto description =
        folder.file("machine.umockdev",
                    "P: /devices/pci0/block/sdx\nN: sdx\nE: SUBSYSTEM=block\nE: DEVTYPE=disk\n"
                    "E: DEVNAME=/dev/sdx\nE: MAJOR=8\nE: MINOR=240\n" +
                        properties + "A: dev=8:240\\n\n\n");
    char self[4096] = {};
    const auto length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    EXPECT_GT(length, 0);
    return run("umockdev-run --device=" + testing::quoted(description) + " -- " +
               testing::quoted(self) + " " + testing::printLabel + " 8 240")
        .text;
  }

  const testing::TemporaryFolder folder;
};

TEST_F(LiveVolumeLabel, IsWhatUdevReadWithItsEscapesResolved) {
  EXPECT_EQ(labelWith("E: ID_FS_LABEL_ENC=My\\x20Disk\\x2f\xC3\xBC\nE: ID_FS_LABEL=My_Disk\n"),
            "My Disk/\xC3\xBC\n");
}

TEST_F(LiveVolumeLabel, IsNoneWhereUdevReadNoneOrAnEmptyOne) {
  EXPECT_EQ(labelWith(""), "none\n");
  EXPECT_EQ(labelWith("E: ID_FS_LABEL_ENC=\n"), "none\n");
}

TEST(LiveVolumeLabelHere, IsNoneOfADeviceThatIsNotThere) {
  MountedVolume volume;
  volume.mayHang = true;
  volume.mount.device = {8, 255};
  EXPECT_EQ(labelOf(volume), std::nullopt);
  volume.mount.device = {0, 41};  // of no device, whose source then tells
  for (const char* source : {"tmpfs", "/dev/missing", "/dev/null", ""}) {
    volume.mount.source = source;
    EXPECT_EQ(labelOf(volume), std::nullopt) << source;
  }
}

}  // namespace
}  // namespace vantile
