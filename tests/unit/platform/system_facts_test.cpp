#include "vantile/platform/linux/system_facts.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fakes/temporary_folder.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;
using testing::TemporaryFolder;

struct LinuxSystemFactsTest : ::testing::Test {
  LinuxSystemFactsTest() { root.file("sysctl/kernel/hostname", "ada-desk\n"); }

  TemporaryFolder root;
  std::optional<Account> account = Account{"ada", "Ada Lovelace,,,", "/home/ada"};
  LinuxSystemFacts facts{LinuxRoots{root.path("proc"), root.path("sys"), root.path("sysctl")},
                         {root.path("etc"), root.path("lib")},
                         [this] { return account; }};
};

TEST_F(LinuxSystemFactsTest, TheComputersNameIsThePrettyOne) {
  root.file("etc/machine-info", fixture("machine-info.txt"));
  EXPECT_EQ(facts.computerName(), "Ada's \"big\" $5 Laptop \\ `x` \\d");
  EXPECT_EQ(facts.hostName(), "ada-desk");
}

TEST_F(LinuxSystemFactsTest, WithoutAPrettyNameItIsTheHostName) {
  EXPECT_EQ(facts.computerName(), "ada-desk");
  root.file("etc/machine-info", "CHASSIS=desktop\n");
  EXPECT_EQ(facts.computerName(), "ada-desk");
  root.file("etc/machine-info", "PRETTY_HOSTNAME=\"\"\n");
  EXPECT_EQ(facts.computerName(), "ada-desk");
  root.remove("etc/machine-info");
  root.folder("etc/machine-info");
  EXPECT_EQ(facts.computerName(), "ada-desk");
}

TEST_F(LinuxSystemFactsTest, APipeInPlaceOfAFileIsNotWaitedFor) {
  root.folder("etc");
  ASSERT_EQ(::mkfifo(root.path("etc/machine-info").c_str(), 0600), 0);
  EXPECT_EQ(facts.computerName(), "ada-desk");
}

TEST_F(LinuxSystemFactsTest, AHostNameThatNobodySetIsNone) {
  for (const char* const text : {"(none)\n", "\n", ""}) {
    root.file("sysctl/kernel/hostname", text);
    EXPECT_EQ(facts.hostName(), std::nullopt) << text;
    EXPECT_EQ(facts.computerName(), std::nullopt) << text;
  }
  root.remove("sysctl/kernel/hostname");
  EXPECT_EQ(facts.hostName(), std::nullopt);
}

TEST_F(LinuxSystemFactsTest, TheUsersNamesAreTheAccounts) {
  EXPECT_EQ(facts.userName(), "ada");
  EXPECT_EQ(facts.fullUserName(), "Ada Lovelace");
}

TEST_F(LinuxSystemFactsTest, WithoutAFullNameTheLoginNameStands) {
  account->information = ",,,";
  EXPECT_EQ(facts.fullUserName(), "ada");
}

TEST_F(LinuxSystemFactsTest, AUserWithoutAnAccountHasNoNames) {
  account = std::nullopt;
  EXPECT_EQ(facts.userName(), std::nullopt);
  EXPECT_EQ(facts.fullUserName(), std::nullopt);
  account = Account{};
  EXPECT_EQ(facts.userName(), std::nullopt);
  EXPECT_EQ(facts.fullUserName(), std::nullopt);
}

TEST_F(LinuxSystemFactsTest, TheVersionIsTheDistributionsOwn) {
  root.file("etc/os-release", fixture("os-release.txt"));
  root.file("lib/os-release", "PRETTY_NAME=\"Vendor 1\"\n");
  EXPECT_EQ(facts.versionText(), "Debian GNU/Linux 12 (bookworm)");
}

TEST_F(LinuxSystemFactsTest, WithoutSettingsTheVersionIsTheVendors) {
  root.file("lib/os-release", "NAME=Vendor\nVERSION_ID=1\n");
  EXPECT_EQ(facts.versionText(), "Vendor 1");
}

TEST_F(LinuxSystemFactsTest, WithoutADistributionTheVersionIsTheKernels) {
  EXPECT_EQ(facts.versionText(), std::nullopt);
  root.file("sysctl/kernel/ostype", "Linux\n");
  EXPECT_EQ(facts.versionText(), std::nullopt);
  root.file("sysctl/kernel/osrelease", "6.1.0-18-amd64\n");
  EXPECT_EQ(facts.versionText(), "Linux 6.1.0-18-amd64");
  root.file("etc/os-release", "ID=debian\n");
  EXPECT_EQ(facts.versionText(), "Linux 6.1.0-18-amd64");
}

TEST_F(LinuxSystemFactsTest, ThereIsNoConstantForTheKindOfSystem) {
  EXPECT_EQ(facts.operatingSystem(), std::nullopt);
}

}  // namespace
}  // namespace vantile
