#include "vantile/platform/linux/host_resources.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

using Path = std::optional<std::string>;

struct LinuxHostResourcesTest : ::testing::Test {
  void runs(const std::string& program) {
    root.remove("proc/self/exe");
    root.folder("proc/self");
    root.symbolicLink("proc/self/exe", program);
  }

  TemporaryFolder root;
  LinuxHostResources resources{LinuxRoots{root.path("proc"), root.path("sys")}};
};

TEST_F(LinuxHostResourcesTest, StandInShareBesideTheExecutablesFolder) {
  runs(root.path("usr/bin/tool"));
  root.file("usr/share/tool/Names.plist");
  EXPECT_EQ(resources.path("Names", "plist"), root.path("usr/share/tool/Names.plist"));
}

TEST_F(LinuxHostResourcesTest, ThatTheHostHasNotAreNone) {
  runs(root.path("usr/bin/tool"));
  root.file("usr/share/tool/Names.plist");
  root.file("usr/share/other/More.plist");
  EXPECT_EQ(resources.path("names", "plist"), std::nullopt);
  EXPECT_EQ(resources.path("Names", "strings"), std::nullopt);
  EXPECT_EQ(resources.path("More", "plist"), std::nullopt);
  EXPECT_EQ(resources.path("", ""), std::nullopt);
}

TEST_F(LinuxHostResourcesTest, AFolderIsNone) {
  runs(root.path("usr/bin/tool"));
  root.folder("usr/share/tool/Names.plist");
  EXPECT_EQ(resources.path("Names", "plist"), std::nullopt);
}

TEST_F(LinuxHostResourcesTest, AProgramThatWasReplacedKeepsIts) {
  runs(root.path("usr/bin/tool") + " (deleted)");
  root.file("usr/share/tool/Names.plist");
  EXPECT_EQ(resources.path("Names", "plist"), root.path("usr/share/tool/Names.plist"));
}

TEST_F(LinuxHostResourcesTest, OfAProgramFarAwayAreFoundToo) {
  const std::string far = "opt/" + std::string(200, 'x') + "/" + std::string(200, 'y');
  runs(root.path(far + "/bin/tool"));
  root.file(far + "/share/tool/Names.plist");
  EXPECT_EQ(resources.path("Names", "plist"), root.path(far + "/share/tool/Names.plist"));
}

TEST_F(LinuxHostResourcesTest, OfAProgramThatCantBeToldAreNone) {
  EXPECT_EQ(resources.path("Names", "plist"), std::nullopt);
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(root.path());
  root.file("share/tool/Names.plist");
  for (const auto* program : {"bin/tool", "(unreachable)/bin/tool", "/"}) {
    runs(program);
    EXPECT_EQ(resources.path("Names", "plist"), std::nullopt) << program;
  }
  std::filesystem::current_path(before);
}

TEST_F(LinuxHostResourcesTest, AFolderThatWasSetHoldsThemAlone) {
  runs(root.path("usr/bin/tool"));
  root.file("usr/share/tool/Names.plist");
  root.file("own/More.plist");
  resources.setFolder(root.path("own"));
  EXPECT_EQ(resources.path("More", "plist"), root.path("own/More.plist"));
  EXPECT_EQ(resources.path("Names", "plist"), std::nullopt);
  resources.setFolder(root.path("own/"));
  EXPECT_EQ(resources.path("More", "plist"), root.path("own/More.plist"));
}

TEST_F(LinuxHostResourcesTest, WithoutAFolderSetAreTheSystemsAgain) {
  runs(root.path("usr/bin/tool"));
  root.file("usr/share/tool/Names.plist");
  resources.setFolder(root.path("own"));
  resources.setFolder(std::nullopt);
  EXPECT_EQ(resources.path("Names", "plist"), root.path("usr/share/tool/Names.plist"));
}

TEST_F(LinuxHostResourcesTest, AnEmptyFolderHoldsNone) {
  resources.setFolder("");
  EXPECT_EQ(resources.path("etc/passwd", ""), std::nullopt);
}

TEST_F(LinuxHostResourcesTest, ATypelessOneHasNoExtension) {
  root.file("own/README");
  resources.setFolder(root.path("own"));
  EXPECT_EQ(resources.path("README", ""), root.path("own/README"));
}

struct LinuxTranslations : ::testing::Test {
  LinuxTranslations() { resources.setFolder(root.path("own")); }

  void table(const std::string& language, const std::string& text) {
    root.file("own/" + language + ".lproj/Localizable.strings", text);
  }

  TemporaryFolder root;
  std::vector<std::string> languages = {"de_AT.UTF-8", "de_AT", "de", "fr", "C"};
  LinuxHostResources resources{LinuxRoots{root.path("proc"), root.path("sys")},
                               [this] { return languages; }};
};

TEST_F(LinuxTranslations, WithoutATableATextIsItsOwn) {
  EXPECT_EQ(resources.localizedString("Trash"), "Trash");
  EXPECT_EQ(resources.localizedString(""), "");
}

TEST_F(LinuxTranslations, StandInTheTableOfTheUsersFirstLanguage) {
  table("fr", "\"Trash\" = \"Corbeille\"; \"Pause\" = \"Pause.\";");
  EXPECT_EQ(resources.localizedString("Trash"), "Corbeille");
  table("de", "\"Trash\" = \"Papierkorb\";");
  EXPECT_EQ(resources.localizedString("Trash"), "Papierkorb");
  table("de_AT",
        "\"Trash\" = \"Mistk\xC3\xBC"
        "bel\";");
  EXPECT_EQ(resources.localizedString("Trash"),
            "Mistk\xC3\xBC"
            "bel");
  EXPECT_EQ(resources.localizedString("Pause"), "Pause.");  // only the last one has it
  EXPECT_EQ(resources.localizedString("Other"), "Other");
}

TEST_F(LinuxTranslations, OfATableThatIsMalformedAreNone) {
  table("de", "\"Trash\" = Papier korb;");
  EXPECT_EQ(resources.localizedString("Trash"), "Trash");
}

TEST_F(LinuxTranslations, AreNotLookedForElsewhere) {
  languages = {"../../elsewhere", "de"};
  root.file("elsewhere.lproj/Localizable.strings", "\"Trash\" = \"Nowhere\";");
  root.folder("own");
  EXPECT_EQ(resources.localizedString("Trash"), "Trash");
}

TEST_F(LinuxTranslations, OfAProgramThatCantBeToldAreNone) {
  table("de", "\"Trash\" = \"Papierkorb\";");
  resources.setFolder(std::nullopt);
  EXPECT_EQ(resources.localizedString("Trash"), "Trash");
}

TEST(UsersLanguages, AreThoseOfTheEnvironmentInTheirOrder) {
  const auto* const before = ::getenv("LANGUAGE");
  const std::string kept = before ? before : "";
  ::setenv("LANGUAGE", "de_AT:fr", 1);
  const auto languages = LinuxHostResources::usersLanguages();
  before ? ::setenv("LANGUAGE", kept.c_str(), 1) : ::unsetenv("LANGUAGE");
  EXPECT_EQ(languages, (std::vector<std::string>{"de_AT", "de", "fr", "C"}));
}

TEST(SystemHostResources, OfThisProgramStandBesideIt) {
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  const auto share = program.parent_path().parent_path() / "share" / program.filename();
  std::filesystem::remove_all(share);
  std::filesystem::create_directories(share);
  std::filesystem::create_symlink(program, share / "Itself.program");
  EXPECT_EQ(systemHostResources()->path("Itself", "program"), share / "Itself.program");
  std::filesystem::remove_all(share);
  EXPECT_EQ(systemHostResources(), systemHostResources());
}

}  // namespace
}  // namespace vantile
