#include "vantile/platform/linux/desktop_index.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "vantile/platform/linux/desktop_entry.h"

#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using testing::TemporaryFolder;

TEST(DesktopEntries, TellNameAndCommand) {
  const auto entry =
      desktopEntryOf("[Desktop Entry]\nType=Application\nName=Mail\nExec=mail \\s%u\n").value();
  EXPECT_EQ(entry.name, "Mail");
  EXPECT_EQ(entry.command, "mail  %u");
  EXPECT_TRUE(entry.isShown);
}

TEST(DesktopEntries, MayLackBoth) {
  const auto entry = desktopEntryOf("[Desktop Entry]\nType=Application\nName=\n").value();
  EXPECT_FALSE(entry.name || entry.command);
}

TEST(DesktopEntries, OfAnotherTypeAreNone) {
  for (const auto* text :
       {"", "[Desktop Entry]\nName=Mail\n", "[Desktop Entry]\nType=Link\n", "\xFF"})
    EXPECT_FALSE(desktopEntryOf(text)) << text;
}

bool isShown(const std::string& lines, std::vector<std::string> desktops = {"GNOME"}) {
  return desktopEntryOf("[Desktop Entry]\nType=Application\n" + lines)->isShownIn(desktops);
}

TEST(DesktopEntries, AreShownUnlessTheySayOtherwise) {
  EXPECT_TRUE(isShown(""));
  EXPECT_FALSE(isShown("NoDisplay=true\n"));
  EXPECT_FALSE(isShown("Hidden=true\n"));
}

TEST(DesktopEntries, MayBeShownInSomeDesktopsAlone) {
  EXPECT_TRUE(isShown("OnlyShowIn=KDE;GNOME;\n"));
  EXPECT_FALSE(isShown("OnlyShowIn=KDE;\n"));
  EXPECT_TRUE(isShown("OnlyShowIn=KDE;\n", {"a", "KDE"}));
  EXPECT_FALSE(isShown("OnlyShowIn=KDE;\n", {}));
  EXPECT_FALSE(isShown("NotShowIn=GNOME;\n"));
  EXPECT_TRUE(isShown("NotShowIn=KDE;\n"));
  EXPECT_FALSE(isShown("OnlyShowIn=GNOME;\nNoDisplay=true\n"));
}

/// Entries in two data folders, programs in a third.
struct DesktopIndexTest : ::testing::Test {
  DesktopIndexTest() {
    variables["XDG_DATA_HOME"] = folder.path("home");
    variables["XDG_DATA_DIRS"] = folder.path("local") + ":" + folder.path("system");
    variables["PATH"] = folder.path("bin");
    folder.folder("home/applications");
    folder.folder("bin");
  }

  void entry(const std::string& relative, const std::string& name, const std::string& lines = "") {
    folder.file(relative, "[Desktop Entry]\nType=Application\nName=" + name + "\n" + lines);
  }
  void program(const std::string& relative, const std::string& contents =
                                                "\x7F"
                                                "ELF") {
    ASSERT_EQ(::chmod(folder.file(relative, contents).c_str(), 0755), 0);
  }
  /// Sets the modification time of a folder or file to a past one.
  void age(const std::string& relative, long seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, folder.path(relative).c_str(), times, 0), 0);
  }

  std::optional<std::string> nameOf(std::optional<std::size_t> number) {
    return number ? std::optional(index[*number].name) : std::nullopt;
  }
  std::optional<std::string> called(const std::string& identifier) {
    index.refresh();
    return nameOf(index.withIdentifier(identifier));
  }
  std::optional<std::string> running(const std::string& executable) {
    index.refresh();
    return nameOf(index.running(folder.path(executable)));
  }

  TemporaryFolder folder;
  std::map<std::string, std::string> variables;
  DesktopIndex index{folder.path("account"), [this](const char* name) {
                       const auto found = variables.find(name);
                       return found == variables.end() ? std::nullopt
                                                       : std::optional(found->second);
                     }};
};

TEST_F(DesktopIndexTest, HasTheEntriesOfEachDataFolder) {
  entry("home/applications/a.desktop", "A");
  entry("local/applications/b.desktop", "B");
  entry("system/applications/c.desktop", "C");
  EXPECT_EQ(called("a"), "A");
  EXPECT_EQ(called("b"), "B");
  EXPECT_EQ(called("c"), "C");
  EXPECT_EQ(called("d"), std::nullopt);
  EXPECT_EQ(index.size(), 3u);
}

TEST_F(DesktopIndexTest, AnEntryHidesThoseOfItsIdentifierInLaterFolders) {
  entry("home/applications/a.desktop", "Mine");
  entry("system/applications/a.desktop", "Theirs");
  EXPECT_EQ(called("a"), "Mine");
  folder.file("home/applications/a.desktop", "nonsense");
  EXPECT_EQ(called("a"), std::nullopt);
}

TEST_F(DesktopIndexTest, FoldersAreAPartOfTheIdentifier) {
  entry("system/applications/kde/office/a.desktop", "A");
  EXPECT_EQ(called("kde-office-a"), "A");
  EXPECT_EQ(called("a"), std::nullopt);
}

TEST_F(DesktopIndexTest, FoldersThatLeadInACircleEnd) {
  entry("system/applications/a.desktop", "A");
  folder.symbolicLink("system/applications/circle", folder.path("system/applications"));
  EXPECT_EQ(called("circle-circle-a"), "A");
}

TEST_F(DesktopIndexTest, WithoutVariablesTheUsualFoldersAreRead) {
  variables.clear();
  entry("account/.local/share/applications/only-here.desktop", "A");
  EXPECT_EQ(called("only-here"), "A");
  variables["XDG_DATA_HOME"] = "relative";
  EXPECT_EQ(called("only-here"), "A");
}

TEST_F(DesktopIndexTest, AChangeOfTheVariablesIsSeen) {
  entry("other/applications/o.desktop", "O");
  EXPECT_EQ(called("o"), std::nullopt);
  variables["XDG_DATA_DIRS"] = "relative::" + folder.path("other") + "/:";
  EXPECT_EQ(called("o"), "O");
}

TEST_F(DesktopIndexTest, AnEntryWithoutANameIsCalledAsItsFile) {
  folder.file("home/applications/a.b.desktop", "[Desktop Entry]\nType=Application\n");
  EXPECT_EQ(called("a.b"), "a.b");
}

TEST_F(DesktopIndexTest, NothingChangesWhereNothingDid) {
  entry("home/applications/a.desktop", "A");
  age("home/applications", 1000);
  EXPECT_TRUE(index.refresh());
  EXPECT_FALSE(index.refresh());
}

TEST_F(DesktopIndexTest, AFolderThatWasJustChangedIsReadAgain) {
  // A further change may have the same time.
  entry("home/applications/a.desktop", "A");
  EXPECT_TRUE(index.refresh());
  EXPECT_TRUE(index.refresh());
}

TEST_F(DesktopIndexTest, AFolderOfATimeToComeIsNotReadAgainUntilItChanges) {
  age("home/applications", 4102444800);
  EXPECT_TRUE(index.refresh());
  EXPECT_FALSE(index.refresh());
  entry("home/applications/a.desktop", "A");
  EXPECT_EQ(called("a"), "A");
}

TEST_F(DesktopIndexTest, EntriesThatComeAndGoAreSeen) {
  age("home/applications", 1000);
  EXPECT_EQ(called("a"), std::nullopt);
  entry("home/applications/a.desktop", "A");
  age("home/applications", 2000);
  EXPECT_EQ(called("a"), "A");
  folder.remove("home/applications/a.desktop");
  age("home/applications", 3000);
  EXPECT_EQ(called("a"), std::nullopt);
}

TEST_F(DesktopIndexTest, ChangesInAFolderBelowAreSeen) {
  folder.folder("home/applications/sub");
  age("home/applications/sub", 1000);
  age("home/applications", 1000);
  EXPECT_EQ(called("sub-a"), std::nullopt);
  entry("home/applications/sub/a.desktop", "A");
  age("home/applications/sub", 2000);
  EXPECT_EQ(called("sub-a"), "A");
}

TEST_F(DesktopIndexTest, AFolderThatComesLaterIsSeen) {
  age("home/applications", 1000);
  EXPECT_EQ(called("a"), std::nullopt);
  entry("system/applications/a.desktop", "A");
  age("system/applications", 1000);
  EXPECT_EQ(called("a"), "A");
}

TEST_F(DesktopIndexTest, AnEntryThatIsWrittenInPlaceIsSeenInItsTurn) {
  for (int number = 0; number < 10; ++number)
    entry("home/applications/" + std::to_string(number) + ".desktop", "Before");
  age("home/applications", 1000);
  EXPECT_EQ(called("9"), "Before");
  entry("home/applications/9.desktop", "Afterwards");
  age("home/applications", 1000);
  int refreshes = 0;
  while (called("9") != "Afterwards" && ++refreshes < 10) {
  }
  EXPECT_LE(refreshes, 5);
}

TEST_F(DesktopIndexTest, AnEntryElsewhereIsReadWhenItIsAskedFor) {
  entry("desktop/x.desktop", "X");
  folder.file("desktop/nonsense.desktop", "nonsense");
  index.refresh();
  EXPECT_EQ(nameOf(index.at(folder.path("desktop/x.desktop"))), "X");
  EXPECT_EQ(index.at(folder.path("desktop/x.desktop")), index.at(folder.path("desktop/x.desktop")));
  EXPECT_EQ(index.at(folder.path("desktop/nonsense.desktop")), std::nullopt);
  EXPECT_EQ(index.at(folder.path("desktop/missing.desktop")), std::nullopt);
}

TEST_F(DesktopIndexTest, AnEntryElsewhereDoesNotStandForItsProgram) {
  program("bin/tool");
  entry("desktop/x.desktop", "X", "Exec=tool\n");
  index.refresh();
  EXPECT_EQ(nameOf(index.at(folder.path("desktop/x.desktop"))), "X");
  EXPECT_EQ(running("bin/tool"), std::nullopt);
}

TEST_F(DesktopIndexTest, AnInstalledEntryIsFoundByItsPath) {
  entry("home/applications/a.desktop", "A");
  index.refresh();
  EXPECT_EQ(nameOf(index.at(folder.path("home/applications/a.desktop"))), "A");
  EXPECT_EQ(index.size(), 1u);
}

TEST_F(DesktopIndexTest, AnExecutableIsFoundInThePath) {
  program("bin/mail");
  entry("home/applications/a.desktop", "Mail", "Exec=mail %u\n");
  EXPECT_EQ(running("bin/mail"), "Mail");
  EXPECT_EQ(running("bin/other"), std::nullopt);
  EXPECT_EQ(running("elsewhere/mail"), std::nullopt);
}

TEST_F(DesktopIndexTest, AnExecutableIsFoundThroughLinks) {
  program("lib/mail-2/mail.bin");
  folder.symbolicLink("bin/mail", folder.path("lib/mail-2/mail.bin"));
  entry("home/applications/a.desktop", "Mail", "Exec=mail\n");
  EXPECT_EQ(running("lib/mail-2/mail.bin"), "Mail");
}

TEST_F(DesktopIndexTest, AnExecutableMayBeNamedByItsPath) {
  program("opt/My Mail/mail");
  entry("home/applications/a.desktop", "Mail",
        "Exec=\"" + folder.path("opt/My Mail/mail") + "\"\n");
  EXPECT_EQ(running("opt/My Mail/mail"), "Mail");
}

TEST_F(DesktopIndexTest, AScriptStandsForTheExecutableOfItsName) {
  program("bin/mail", "#!/bin/sh\nexec lib/mail/mail\n");
  entry("home/applications/a.desktop", "Mail", "Exec=mail\n");
  EXPECT_EQ(running("lib/mail/mail"), "Mail");
  EXPECT_EQ(running("lib/mail/mailer"), std::nullopt);
}

TEST_F(DesktopIndexTest, InterpretersAreNoApplications) {
  program("bin/python3");
  program("bin/dash");
  program("bin/tool", "#!/usr/bin/python3\n");
  folder.symbolicLink("bin/shell", folder.path("bin/dash"));
  entry("home/applications/a.desktop", "Script", "Exec=python3 /opt/script.py\n");
  entry("home/applications/b.desktop", "Tool", "Exec=tool\n");
  entry("home/applications/c.desktop", "Shell", "Exec=shell\n");
  EXPECT_EQ(running("bin/python3"), std::nullopt);
  EXPECT_EQ(running("bin/dash"), std::nullopt);
}

TEST_F(DesktopIndexTest, EntriesThatNoMenuShowsDoNotMatchExecutables) {
  program("bin/mail");
  entry("home/applications/a.desktop", "Hidden", "Exec=mail\nNoDisplay=true\n");
  entry("home/applications/b.desktop", "Elsewhere", "Exec=mail\nOnlyShowIn=KDE;\n");
  EXPECT_EQ(running("bin/mail"), std::nullopt);
  EXPECT_EQ(called("a"), "Hidden");
  variables["XDG_CURRENT_DESKTOP"] = "ubuntu:KDE";
  variables["XDG_DATA_DIRS"] = folder.path("system");
  EXPECT_EQ(running("bin/mail"), "Elsewhere");
}

TEST_F(DesktopIndexTest, OfTwoEntriesForOneExecutableTheFirstCounts) {
  program("bin/mail");
  entry("home/applications/b.desktop", "New message", "Exec=mail --new\n");
  entry("home/applications/a.desktop", "Mail", "Exec=mail\n");
  entry("system/applications/0.desktop", "Theirs", "Exec=mail\n");
  EXPECT_EQ(running("bin/mail"), "Mail");
}

TEST_F(DesktopIndexTest, AProgramThatIsNotThereMatchesNothing) {
  folder.file("bin/plain",
              "\x7F"
              "ELF");
  entry("home/applications/a.desktop", "A", "Exec=missing\n");
  entry("home/applications/b.desktop", "B", "Exec=plain\n");
  entry("home/applications/c.desktop", "C", "Exec=bin/plain\n");
  EXPECT_EQ(running("bin/missing"), std::nullopt);
  EXPECT_EQ(running("bin/plain"), std::nullopt);
}

}  // namespace
}  // namespace vantile
