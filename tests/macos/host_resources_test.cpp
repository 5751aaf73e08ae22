#include "vantile/platform/macos/host_resources.h"

#include "seam.h"
#include "temporary_folder.h"

namespace vantile {
namespace {

class HostResourcesSeam : public Seam {
 protected:
  HostResourcesSeam() { fakes::machine.resources["Apps.plist"] = inBundle; }

  const std::string inBundle = "/Applications/Host.app/Contents/Resources/Apps.plist";
  TemporaryFolder folder;
  const std::shared_ptr<HostResources> resources = makeHostResources();
};

TEST_F(HostResourcesSeam, StandInTheMainBundle) {
  EXPECT_EQ(resources->path("Apps", "plist"), inBundle);
  EXPECT_FALSE(resources->path("Apps", "txt"));
}

TEST_F(HostResourcesSeam, MayHaveNoType) {
  fakes::machine.resources["Read me"] = "/read me";
  EXPECT_EQ(resources->path("Read me", ""), "/read me");
}

TEST_F(HostResourcesSeam, StandInTheFolderThatWasSet) {
  folder.write("Apps.plist", "");
  folder.write("Apps", "");
  resources->setFolder(folder.path().string());
  EXPECT_EQ(resources->path("Apps", "plist"), folder / "Apps.plist");
  EXPECT_EQ(resources->path("Apps", ""), folder / "Apps");
  resources->setFolder(folder.path().string() + "/");
  EXPECT_EQ(resources->path("Apps", "plist"), folder / "Apps.plist");
}

TEST_F(HostResourcesSeam, AreMissingWhereTheFolderThatWasSetLacksThem) {
  folder.makeFolder("Apps.plist");
  resources->setFolder(folder.path().string());
  EXPECT_FALSE(resources->path("Apps", "plist"));
  EXPECT_FALSE(resources->path("Other", "plist"));
}

TEST_F(HostResourcesSeam, AreNotLookedForInTheRootWhereTheFolderIsEmpty) {
  folder.write("Apps", "");
  resources->setFolder("");
  EXPECT_FALSE(resources->path((folder / "Apps").substr(1), ""));
  resources->setFolder("/");
  EXPECT_EQ(resources->path((folder / "Apps").substr(1), ""), folder / "Apps");
}

TEST_F(HostResourcesSeam, StandInTheMainBundleAgainOnceNoFolderIsSet) {
  resources->setFolder(folder.path().string());
  resources->setFolder(std::nullopt);
  EXPECT_EQ(resources->path("Apps", "plist"), inBundle);
}

TEST_F(HostResourcesSeam, AreMissingWithoutABundle) {
  fakes::machine.hasBundle = false;
  EXPECT_FALSE(resources->path("Apps", "plist"));
}

TEST_F(HostResourcesSeam, AreMissingByANameThatIsNotUtf8) {
  EXPECT_FALSE(resources->path("Apps\xFF", "plist"));
  EXPECT_FALSE(resources->path("Apps", "\xFF"));
}

TEST_F(HostResourcesSeam, AreMissingWhereTheSystemFails) {
  for (const char* const function :
       {"CFStringCreateWithBytes", "CFBundleCopyResourceURL", "CFURLGetFileSystemRepresentation"}) {
    fakes::machine.refuses = {function};
    EXPECT_FALSE(resources->path("Apps", "plist")) << function;
  }
}

TEST_F(HostResourcesSeam, AreMissingAtAPathThatIsTooLong) {
  fakes::machine.resources["Apps.plist"] = std::string(5000, 'a');
  EXPECT_FALSE(resources->path("Apps", "plist"));
}

TEST_F(HostResourcesSeam, ATranslationStandsInTheBundlesDefaultTable) {
  fakes::machine.translations["Trash"] = u"Papierk\u00F6rbe";
  EXPECT_EQ(resources->localizedString("Trash"), "Papierk\u00F6rbe");
  resources->setFolder(folder.path().string());
  EXPECT_EQ(resources->localizedString("Trash"), "Papierk\u00F6rbe");
}

TEST_F(HostResourcesSeam, WithoutATranslationATextIsItsOwn) {
  EXPECT_EQ(resources->localizedString("Trash"), "Trash");
  EXPECT_EQ(resources->localizedString("Trash\xFF"), "Trash\xFF");
  fakes::machine.translations["Trash"] = u"\xD800";  // half a character
  EXPECT_EQ(resources->localizedString("Trash"), "Trash");
  fakes::machine.translations["Trash"] = u"Corbeille";
  for (const char* const function : {"CFStringCreateWithBytes", "CFBundleCopyLocalizedString"}) {
    fakes::machine.refuses = {function};
    EXPECT_EQ(resources->localizedString("Trash"), "Trash") << function;
  }
  fakes::machine.refuses.clear();
  fakes::machine.hasBundle = false;
  EXPECT_EQ(resources->localizedString("Trash"), "Trash");
}

TEST_F(HostResourcesSeam, AreSharedByTheProcess) {
  EXPECT_EQ(systemHostResources(), systemHostResources());
}

}  // namespace
}  // namespace vantile
