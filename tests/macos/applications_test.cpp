#include "vantile/platform/applications.h"

#include "seam.h"

namespace vantile {
namespace {

using ApplicationsSeam = Seam;

bool isApplication(std::string_view name, FileKind kind) {
  return systemApplications()->isApplication(name, kind, [] {
    ADD_FAILURE() << "the contents were asked for";
    return std::nullopt;
  });
}

TEST_F(ApplicationsSeam, AreFoldersWithTheExtensionApp) {
  EXPECT_TRUE(isApplication("Safari.app", FileKind::folder));
  EXPECT_TRUE(isApplication("a.b.app", FileKind::folder));
  EXPECT_FALSE(isApplication("Safari", FileKind::folder));
  EXPECT_FALSE(isApplication("Safari.application", FileKind::folder));
}

TEST_F(ApplicationsSeam, AreNotFilesOrLinksOfSuchAName) {
  EXPECT_FALSE(isApplication("Safari.app", FileKind::regular));
  EXPECT_FALSE(isApplication("Safari.app", FileKind::symbolicLink));
}

TEST_F(ApplicationsSeam, ANameThatIsAllExtensionHasNone) {
  EXPECT_FALSE(isApplication(".app", FileKind::folder));
}

TEST_F(ApplicationsSeam, HaveTheExtensionApp) {
  EXPECT_TRUE(systemApplications()->isApplicationExtension("app"));
  EXPECT_FALSE(systemApplications()->isApplicationExtension("App"));
  EXPECT_FALSE(systemApplications()->isApplicationExtension(".app"));
  EXPECT_FALSE(systemApplications()->isApplicationExtension("desktop"));
  EXPECT_FALSE(systemApplications()->isApplicationExtension(""));
}

TEST_F(ApplicationsSeam, AreCalledAsUsersSeeThem) {
  fakes::machine.localizedNames["/Applications/Chess.app"] = {u"Échecs.app"};
  EXPECT_EQ(systemApplications()->displayName("/Applications/Chess.app"), "Échecs.app");
}

TEST_F(ApplicationsSeam, HaveNoNameWhereTheSystemTellsNone) {
  const auto applications = systemApplications();
  EXPECT_FALSE(applications->displayName("/Applications/None.app"));
  EXPECT_FALSE(applications->displayName(""));
  fakes::machine.localizedNames["/odd"] = {true};
  EXPECT_FALSE(applications->displayName("/odd"));
  fakes::machine.localizedNames["/half"] = {std::u16string(1, char16_t{0xDC00})};
  EXPECT_FALSE(applications->displayName("/half"));
}

TEST_F(ApplicationsSeam, HaveNoNameWhereTheSystemFails) {
  fakes::machine.localizedNames["/Applications/Chess.app"] = {u"Chess.app"};
  for (const char* const function : {"CFURLCreateFromFileSystemRepresentation",
                                     "CFURLCopyResourcePropertyForKey", "CFStringGetBytes"}) {
    fakes::machine.refuses = {function};
    EXPECT_FALSE(systemApplications()->displayName("/Applications/Chess.app")) << function;
  }
}

}  // namespace
}  // namespace vantile
