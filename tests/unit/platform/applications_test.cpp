#include "vantile/platform/applications.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using namespace std::string_view_literals;
using testing::TemporaryFolder;

bool isApplication(std::string_view name, FileKind kind,
                   std::optional<std::string> contents = std::nullopt) {
  return systemApplications()->isApplication(name, kind, [&] { return contents; });
}
bool isShown(const std::string& lines) {
  return isApplication("x.desktop", FileKind::regular, "[Desktop Entry]\n" + lines);
}

TEST(LinuxApplications, AreFoldersWithTheExtensionApp) {
  EXPECT_TRUE(isApplication("Tool.app", FileKind::folder));
  EXPECT_FALSE(isApplication("Tool.APP", FileKind::folder));
  EXPECT_FALSE(isApplication("Tool.app.old", FileKind::folder));
  EXPECT_FALSE(isApplication("app", FileKind::folder));
}

TEST(LinuxApplications, AFolderCalledNothingButAppHasNoExtension) {
  EXPECT_FALSE(isApplication(".app", FileKind::folder));
}

TEST(LinuxApplications, AFileWithTheExtensionAppIsNone) {
  EXPECT_FALSE(isApplication("Tool.app", FileKind::regular, "anything"));
  EXPECT_FALSE(isApplication("Tool.app", FileKind::symbolicLink));
  EXPECT_FALSE(isApplication("Tool.app", FileKind::other));
}

TEST(LinuxApplications, AreAppImagesInWhateverCase) {
  EXPECT_TRUE(isApplication("Tool-1.2.AppImage", FileKind::regular));
  EXPECT_TRUE(isApplication("tool.appimage", FileKind::regular));
  EXPECT_TRUE(isApplication("TOOL.APPIMAGE", FileKind::regular));
  EXPECT_FALSE(isApplication("Tool.AppImage", FileKind::folder));
  EXPECT_FALSE(isApplication("Tool.AppImage", FileKind::symbolicLink));
  EXPECT_FALSE(isApplication("AppImage", FileKind::regular));
  EXPECT_FALSE(isApplication("Tool.AppImage.part", FileKind::regular));
}

TEST(LinuxApplications, AFileCalledNothingButAnEndingHasNoExtension) {
  EXPECT_FALSE(isApplication(".AppImage", FileKind::regular));
  EXPECT_FALSE(
      isApplication(".desktop", FileKind::regular, "[Desktop Entry]\nType=Application\nName=x\n"));
}

TEST(LinuxApplications, AreDesktopEntriesThatMenusShow) {
  EXPECT_TRUE(isShown("Type=Application\nName=Tool\nExec=tool\n"));
  EXPECT_TRUE(isShown("Type=Application\nNoDisplay=false\nHidden=false\n"));
}

TEST(LinuxApplications, HiddenEntriesAreNone) {
  EXPECT_FALSE(isShown("Type=Application\nHidden=true\n"));
  EXPECT_FALSE(isShown("Type=Application\nNoDisplay=true\n"));
  EXPECT_FALSE(isShown("Type=Application\nHidden=false\nNoDisplay=true\n"));
}

TEST(LinuxApplications, EntriesOfAnotherTypeAreNone) {
  EXPECT_FALSE(isShown("Type=Link\nURL=file:///\n"));
  EXPECT_FALSE(isShown("Type=Directory\n"));
  EXPECT_FALSE(isShown("Type=application\n"));
}

TEST(LinuxApplications, AnEntryWithoutATypeIsNone) {
  EXPECT_FALSE(isShown("Name=Tool\nExec=tool\n"));
}

TEST(LinuxApplications, TheTypeOfAnotherGroupIsNotTheEntrys) {
  EXPECT_FALSE(isShown("Name=Tool\n[Desktop Action new]\nType=Application\n"));
  EXPECT_TRUE(isShown("Type=Application\n[Desktop Action new]\nNoDisplay=true\n"));
}

TEST(LinuxApplications, MalformedEntriesAreNone) {
  for (const auto text :
       {""sv, "\n"sv, "Type=Application\n"sv, "[Desktop Entry\nType=Application"sv,
        "[Desktop Entry]\nnonsense\nType=Application\n"sv, "\0\0\0"sv, "\xFF\xFE[\n"sv})
    EXPECT_FALSE(isApplication("x.desktop", FileKind::regular, std::string(text))) << text;
}

TEST(LinuxApplications, AnEntryThatCantBeReadIsNone) {
  EXPECT_FALSE(isApplication("x.desktop", FileKind::regular, std::nullopt));
}

TEST(LinuxApplications, WhatIsNoFileIsNotRead) {
  for (const auto kind : {FileKind::folder, FileKind::symbolicLink, FileKind::other}) {
    bool asked = false;
    const auto contents = [&asked] {
      asked = true;
      return std::optional<std::string>("[Desktop Entry]\nType=Application\n");
    };
    EXPECT_FALSE(systemApplications()->isApplication("x.desktop", kind, contents));
    EXPECT_FALSE(asked);
  }
}

TEST(LinuxApplications, OtherFilesAreNotRead) {
  bool asked = false;
  const auto contents = [&asked] {
    asked = true;
    return std::optional<std::string>();
  };
  EXPECT_FALSE(systemApplications()->isApplication("notes.txt", FileKind::regular, contents));
  EXPECT_FALSE(systemApplications()->isApplication("x.desktop~", FileKind::regular, contents));
  EXPECT_FALSE(asked);
}

TEST(LinuxApplications, HaveThreeExtensions) {
  for (const auto* extension : {"app", "desktop", "AppImage", "appimage", "APPIMAGE"})
    EXPECT_TRUE(systemApplications()->isApplicationExtension(extension)) << extension;
  for (const auto* extension : {"", "App", "APP", "Desktop", "apps", "ap", "AppImages", ".app"})
    EXPECT_FALSE(systemApplications()->isApplicationExtension(extension)) << extension;
}

struct LinuxApplicationNames : ::testing::Test {
  LinuxApplicationNames() { ::setenv("LANGUAGE", "de:fr", 1); }
  ~LinuxApplicationNames() override { ::unsetenv("LANGUAGE"); }

  std::optional<std::string> shown(const std::string& relative) {
    return systemApplications()->displayName(folder.path(relative));
  }
  /// The name shown for an entry with these lines in its file.
  std::optional<std::string> entry(const std::string& lines) {
    folder.file("org.x.Tool.desktop", lines);
    return shown("org.x.Tool.desktop");
  }

  TemporaryFolder folder;
};

TEST_F(LinuxApplicationNames, OfAnEntryIsItsOwnInTheUsersLanguage) {
  EXPECT_EQ(entry("[Desktop Entry]\nName=Files\nName[de]=Dateien\nName[fr]=Fichiers\n"),
            "Dateien.desktop");
  EXPECT_EQ(entry("[Desktop Entry]\nName=Files\nName[fr]=Fichiers\n"), "Fichiers.desktop");
  EXPECT_EQ(entry("[Desktop Entry]\nName=Files\nName[it]=File\n"), "Files.desktop");
}

TEST_F(LinuxApplicationNames, OfAnEntryWithoutOneIsTheFiles) {
  for (const auto* lines : {"", "[Desktop Entry]\nType=Application\n", "[Desktop Entry]\nName=\n",
                            "[Other]\nName=x\n", "[Desktop Entry]\nName=\xFF\n", "nonsense"})
    EXPECT_EQ(entry(lines), "org.x.Tool.desktop") << lines;
}

TEST_F(LinuxApplicationNames, OfAnEntryThatIsALinkIsTheEntrysOwn) {
  folder.symbolicLink("link.desktop", folder.file("entry", "[Desktop Entry]\nName=Tool\n"));
  EXPECT_EQ(shown("link.desktop"), "Tool.desktop");
}

TEST_F(LinuxApplicationNames, OfAllElseIsTheLastPathComponent) {
  const auto text = "[Desktop Entry]\nName=Tool\n";
  folder.file("a.AppImage", text);
  folder.file(".desktop", text);
  folder.folder("b.desktop");
  ASSERT_EQ(::mkfifo(folder.path("c.desktop").c_str(), 0600), 0);
  for (const auto* name : {"a.AppImage", ".desktop", "b.desktop", "c.desktop", "missing.desktop",
                           "d.app", "e\xFF", "f"})
    EXPECT_EQ(shown(name), name);
  EXPECT_EQ(shown("d.app//"), "d.app");
  EXPECT_EQ(systemApplications()->displayName("/"), "/");
  EXPECT_EQ(systemApplications()->displayName("//"), "/");
  EXPECT_EQ(systemApplications()->displayName("name"), "name");
}

TEST_F(LinuxApplicationNames, OfNoPathIsNone) {
  EXPECT_EQ(systemApplications()->displayName(""), std::nullopt);
}

TEST_F(LinuxApplicationNames, AnEntryIsNotReadBeyondAMegabyte) {
  const std::string comment = "#" + std::string(1u << 20, 'x') + "\n";
  EXPECT_EQ(entry("[Desktop Entry]\nName=Early\n" + comment + "Name=Late\n"), "Early.desktop");
}

}  // namespace
}  // namespace vantile
