#include "vantile/platform/linux/browsers.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "vantile/platform/posix/files.h"

#include "fakes/temporary_folder.h"
#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;
using testing::TemporaryFolder;

using Folder = std::optional<std::string>;

/// What `setting` gives where a browser has preferences that leave the folder to the system.
const Folder systemsOwn = "";

std::string chromiumJson(const std::string& folder) {
  return "{\"download\":{\"default_directory\":\"" + folder + "\"}}";
}
std::string prefsJs(const std::string& folder) {
  return "user_pref(\"browser.download.dir\", \"" + folder +
         "\");\nuser_pref(\"browser.download.folderList\", 2);\n";
}

struct LinuxBrowsersTest : ::testing::Test {
  /// What the browser's preferences say; "" for no folder, nothing for no preferences.
  Folder folderOf(const std::string& list) {
    const auto setting = browsers.setting({"/any/Preferences/" + list, "AnyKey"});
    return setting ? Folder(setting->folder.value_or("")) : std::nullopt;
  }
  Folder chrome() { return folderOf("com.google.Chrome.plist"); }
  Folder opera() { return folderOf("com.operasoftware.Opera.plist"); }
  Folder firefox() { return folderOf("org.mozilla.firefox.plist"); }

  /// Writes a file in the home, `minute` minutes after a moment long ago.
  void file(const std::string& relative, const std::string& contents, int minute = 0) {
    using namespace std::chrono;
    home.file(relative, contents);
    const sys_seconds moment = sys_days(2020y / 1 / 1) + minutes(minute);
    std::filesystem::last_write_time(home.path(relative), file_clock::from_sys(moment));
  }
  void profile(const std::string& name, const std::string& prefs, int minute = 0) {
    file(".config/mozilla/firefox/installs.ini", "[A]\nDefault=" + name + "\n", minute);
    file(".config/mozilla/firefox/" + name + "/prefs.js", prefs, minute);
  }

  TemporaryFolder home;
  std::map<std::string, std::string> environment;
  std::vector<std::string> filesRead;
  LinuxBrowsers browsers{XdgFolders(home.path(),
                                    [this](const char* name) {
                                      const auto found = environment.find(name);
                                      return found == environment.end() ? std::nullopt
                                                                        : Folder(found->second);
                                    }),
                         [this](const std::string& path) {
                           filesRead.push_back(path);
                           return contentsOf(path, 1u << 20);
                         }};
};

TEST_F(LinuxBrowsersTest, WithoutPreferencesSayNothing) {
  EXPECT_EQ(chrome(), std::nullopt);
  EXPECT_EQ(opera(), std::nullopt);
  EXPECT_EQ(firefox(), std::nullopt);
}

TEST_F(LinuxBrowsersTest, OthersAreNotKnown) {
  file(".config/google-chrome/Default/Preferences", chromiumJson("/a"));
  for (const auto* list : {"com.apple.Safari.plist", "com.google.chrome.plist", "", "plist"})
    EXPECT_EQ(folderOf(list), std::nullopt) << list;
  EXPECT_EQ(browsers.setting({"com.google.Chrome.plist", ""})->folder, "/a");
}

TEST_F(LinuxBrowsersTest, ChromeSaysWhereItSaves) {
  file(".config/google-chrome/Default/Preferences", fixture("chromium-preferences.json"));
  EXPECT_EQ(chrome(), "/home/ada/Übertragungen \"groß\"");
}

TEST_F(LinuxBrowsersTest, ChromeWithoutAFolderOfItsOwnLeavesItToTheSystem) {
  file(".config/google-chrome/Default/Preferences", "{\"download\":{}}");
  EXPECT_EQ(chrome(), systemsOwn);
}

TEST_F(LinuxBrowsersTest, OfChromeAndChromiumTheOneChangedLastIsAsked) {
  file(".config/google-chrome/Default/Preferences", chromiumJson("/chrome"), 1);
  EXPECT_EQ(chrome(), "/chrome");
  file(".config/chromium/Default/Preferences", chromiumJson("/chromium"), 2);
  EXPECT_EQ(chrome(), "/chromium");
  file(".config/google-chrome/Default/Preferences", chromiumJson("/again"), 3);
  EXPECT_EQ(chrome(), "/again");
}

TEST_F(LinuxBrowsersTest, OperaSaysWhereItSavesInEitherPlace) {
  file(".config/opera/Preferences", chromiumJson("/old"), 1);
  EXPECT_EQ(opera(), "/old");
  file(".config/opera/Default/Preferences", chromiumJson("/new"), 2);
  EXPECT_EQ(opera(), "/new");
  EXPECT_EQ(chrome(), std::nullopt);
}

TEST_F(LinuxBrowsersTest, PreferencesLieWhereTheEnvironmentSays) {
  environment["XDG_CONFIG_HOME"] = home.path("elsewhere");
  file("elsewhere/chromium/Default/Preferences", chromiumJson("/a"));
  file("elsewhere/mozilla/firefox/installs.ini", "[A]\nDefault=p\n");
  file("elsewhere/mozilla/firefox/p/prefs.js", prefsJs("/b"));
  EXPECT_EQ(chrome(), "/a");
  EXPECT_EQ(firefox(), "/b");
}

TEST_F(LinuxBrowsersTest, FirefoxSaysWhereTheInstallationsProfileSaves) {
  file(".config/mozilla/firefox/installs.ini", "[A]\nDefault=k3x9abcd.default-esr\n");
  file(".config/mozilla/firefox/profiles.ini", fixture("firefox-profiles.ini"));
  file(".config/mozilla/firefox/k3x9abcd.default-esr/prefs.js", fixture("firefox-prefs.js"), 1);
  file(".config/mozilla/firefox/0a1b2c3d.default/prefs.js", prefsJs("/not/here"), 2);
  EXPECT_EQ(firefox(), "/home/ada/Übertragungen \"groß\"");
}

TEST_F(LinuxBrowsersTest, OfSeveralInstallationsTheProfileChangedLastIsAsked) {
  file(".config/mozilla/firefox/installs.ini", fixture("firefox-installs.ini"));
  file(".config/mozilla/firefox/profiles/q7zz.work/prefs.js", prefsJs("/work"), 1);
  EXPECT_EQ(firefox(), "/work");
  file(".config/mozilla/firefox/k3x9abcd.default-esr/prefs.js", prefsJs("/esr"), 2);
  EXPECT_EQ(firefox(), "/esr");
  file(".config/mozilla/firefox/profiles/q7zz.work/prefs.js", prefsJs("/again"), 3);
  EXPECT_EQ(firefox(), "/again");
}

TEST_F(LinuxBrowsersTest, FirefoxWithoutInstallationsUsesItsDefaultProfile) {
  file(".config/mozilla/firefox/profiles.ini", fixture("firefox-profiles.ini"));
  file(".config/mozilla/firefox/k3x9abcd.default-esr/prefs.js", prefsJs("/not/here"), 2);
  file(".config/mozilla/firefox/0a1b2c3d.default/prefs.js", prefsJs("/a"), 1);
  EXPECT_EQ(firefox(), "/a");
}

TEST_F(LinuxBrowsersTest, FirefoxThatLostItsInstallationsUsesItsDefaultProfile) {
  profile("p", prefsJs("/a"));
  file(".config/mozilla/firefox/profiles.ini", "[Profile0]\nPath=q\n");
  file(".config/mozilla/firefox/q/prefs.js", prefsJs("/b"));
  EXPECT_EQ(firefox(), "/a");
  home.remove(".config/mozilla/firefox/installs.ini");
  EXPECT_EQ(firefox(), "/b");
}

TEST_F(LinuxBrowsersTest, AProfileMayLieElsewhere) {
  file(".config/mozilla/firefox/installs.ini", "[A]\nDefault=" + home.path("own/p") + "\n");
  file("own/p/prefs.js", prefsJs("/a"));
  EXPECT_EQ(firefox(), "/a");
}

TEST_F(LinuxBrowsersTest, AFirefoxFolderInTheHomeWins) {
  profile("p", prefsJs("/config"), 2);
  EXPECT_EQ(firefox(), "/config");
  file(".mozilla/firefox/installs.ini", "[A]\nDefault=q\n", 1);
  file(".mozilla/firefox/q/prefs.js", prefsJs("/home"), 1);
  EXPECT_EQ(firefox(), "/home");
  home.remove(".mozilla/firefox/q");
  EXPECT_EQ(firefox(), std::nullopt);
}

TEST_F(LinuxBrowsersTest, FirefoxMaySaveOnTheDesktop) {
  profile("p", "user_pref(\"browser.download.folderList\", 0);\n");
  EXPECT_EQ(firefox(), home.path("Desktop"));
  file(".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n");
  EXPECT_EQ(firefox(), home.path("Schreibtisch"));
}

TEST_F(LinuxBrowsersTest, FirefoxMayLeaveTheFolderToTheSystem) {
  int minute = 0;
  for (const auto* list : {"1", "3", "-1", "\"2\"", "true"}) {
    profile("p", prefsJs("/a") + "user_pref(\"browser.download.folderList\", " + list + ");\n",
            ++minute);
    EXPECT_EQ(firefox(), systemsOwn) << list;
  }
  profile("p", "user_pref(\"browser.download.dir\", \"/a\");\n", ++minute);
  EXPECT_EQ(firefox(), systemsOwn);
  profile("p", "user_pref(\"browser.download.folderList\", 2);\n", ++minute);
  EXPECT_EQ(firefox(), systemsOwn);
}

TEST_F(LinuxBrowsersTest, AHalfWrittenFileSaysWhatItSaidBefore) {
  file(".config/chromium/Default/Preferences", chromiumJson("/a"), 1);
  profile("p", prefsJs("/b"), 1);
  EXPECT_EQ(chrome(), "/a");
  EXPECT_EQ(firefox(), "/b");
  file(".config/chromium/Default/Preferences", "{\"download\":{\"default_di", 2);
  file(".config/mozilla/firefox/p/prefs.js", "user_pref(\"browser.download.dir\", \"/c\");", 2);
  EXPECT_EQ(chrome(), "/a");
  EXPECT_EQ(firefox(), "/b");
  file(".config/mozilla/firefox/installs.ini", "[A]\nDefault=", 3);
  EXPECT_EQ(firefox(), "/b");
  file(".config/chromium/Default/Preferences", chromiumJson("/d"), 4);
  EXPECT_EQ(chrome(), "/d");
}

TEST_F(LinuxBrowsersTest, AHalfWrittenFileThatSaidNothingYetNamesNoFolder) {
  file(".config/chromium/Default/Preferences", "");
  profile("p", "");
  EXPECT_EQ(chrome(), systemsOwn);
  EXPECT_EQ(firefox(), systemsOwn);
}

TEST_F(LinuxBrowsersTest, AFileThatIsGoneSaysNothing) {
  file(".config/chromium/Default/Preferences", chromiumJson("/a"));
  EXPECT_EQ(chrome(), "/a");
  home.remove(".config/chromium/Default/Preferences");
  EXPECT_EQ(chrome(), std::nullopt);
}

TEST_F(LinuxBrowsersTest, WhatIsNoFileIsNotWaitedFor) {
  home.folder(".config/chromium/Default");
  ASSERT_EQ(::mkfifo(home.path(".config/chromium/Default/Preferences").c_str(), 0600), 0);
  home.folder(".config/opera/Preferences");
  EXPECT_EQ(chrome(), std::nullopt);
  EXPECT_EQ(opera(), std::nullopt);
}

TEST_F(LinuxBrowsersTest, AFileThatDidNotChangeIsReadOnce) {
  file(".config/chromium/Default/Preferences", chromiumJson("/a"));
  profile("p", prefsJs("/b"));
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(chrome(), "/a");
    EXPECT_EQ(firefox(), "/b");
    (void)browsers.preferenceFolders();
  }
  std::sort(filesRead.begin(), filesRead.end());
  EXPECT_EQ(filesRead, (std::vector{home.path(".config/chromium/Default/Preferences"),
                                    home.path(".config/mozilla/firefox/installs.ini"),
                                    home.path(".config/mozilla/firefox/p/prefs.js")}));
}

TEST_F(LinuxBrowsersTest, AHalfWrittenFileIsReadOnceToo) {
  file(".config/chromium/Default/Preferences", "{");
  EXPECT_EQ(chrome(), systemsOwn);
  EXPECT_EQ(chrome(), systemsOwn);
  EXPECT_EQ(filesRead.size(), 1u);
}

TEST_F(LinuxBrowsersTest, AFileOfAnotherSizeIsReadAgain) {
  file(".config/chromium/Default/Preferences", chromiumJson("/a"), 1);
  EXPECT_EQ(chrome(), "/a");
  file(".config/chromium/Default/Preferences", chromiumJson("/longer"), 1);
  EXPECT_EQ(chrome(), "/longer");
}

TEST_F(LinuxBrowsersTest, AFileModifiedSinceIsReadAgain) {
  file(".config/chromium/Default/Preferences", chromiumJson("/a"), 1);
  EXPECT_EQ(chrome(), "/a");
  file(".config/chromium/Default/Preferences", chromiumJson("/b"), 2);
  EXPECT_EQ(chrome(), "/b");
}

TEST_F(LinuxBrowsersTest, AFileThatWasReplacedIsReadAgain) {
  file(".config/chromium/Default/Preferences", chromiumJson("/a"), 1);
  EXPECT_EQ(chrome(), "/a");
  file(".config/chromium/Default/new", chromiumJson("/b"), 1);
  std::filesystem::rename(home.path(".config/chromium/Default/new"),
                          home.path(".config/chromium/Default/Preferences"));
  EXPECT_EQ(chrome(), "/b");
}

TEST_F(LinuxBrowsersTest, TheFoldersOfPreferencesAreNamedWhetherTheyExistOrNot) {
  auto folders = browsers.preferenceFolders();
  std::sort(folders.begin(), folders.end());
  std::vector<std::string> expected;
  for (const auto* folder :
       {".config/chromium", ".config/chromium/Default", ".config/google-chrome",
        ".config/google-chrome/Default", ".config/mozilla", ".config/mozilla/firefox",
        ".config/opera", ".config/opera/Default", ".mozilla", ".mozilla/firefox"})
    expected.push_back(home.path(folder));
  EXPECT_EQ(folders, expected);
}

TEST_F(LinuxBrowsersTest, TheFoldersOfProfilesAreNamedWithThoseThatLeadToThem) {
  const auto named = [this](const std::string& folder) {
    const auto folders = browsers.preferenceFolders();
    return std::count(folders.begin(), folders.end(), folder);
  };
  file(".config/mozilla/firefox/installs.ini",
       "[A]\nDefault=profiles/./q7zz.work/\n[B]\nDefault=profiles/other\n[C]\nDefault=" +
           home.path("own/p") +
           "\n[D]\nDefault=/srv/p/q\n[E]\nDefault=../..\n[F]\nDefault=" + home.path() + "\n");
  EXPECT_EQ(named(home.path(".config/mozilla/firefox/profiles/q7zz.work")), 1);
  EXPECT_EQ(named(home.path(".config/mozilla/firefox/profiles/other")), 1);
  EXPECT_EQ(named(home.path(".config/mozilla/firefox/profiles")), 1);
  EXPECT_EQ(named(home.path(".config/mozilla")), 1);
  EXPECT_EQ(named(home.path("own/p")), 1);
  EXPECT_EQ(named(home.path("own")), 1);
  EXPECT_EQ(named("/srv/p/q"), 1);
  EXPECT_EQ(named("/srv/p"), 0);
  EXPECT_EQ(named(home.path()), 0);
  EXPECT_EQ(named(home.path(".config")), 0);
}

TEST_F(LinuxBrowsersTest, RenameDownloadsThatGoOn) {
  EXPECT_TRUE(browsers.renamesUnfinished());
}

TEST_F(LinuxBrowsersTest, NoneHasSafarisFolder) {
  EXPECT_FALSE(browsers.hasSafariFolder());
}

TEST(SystemBrowsers, AreSharedByTheProcess) {
  EXPECT_EQ(systemBrowsers(), systemBrowsers());
  for (const auto& folder : systemBrowsers()->preferenceFolders())
    EXPECT_TRUE(folder.starts_with('/')) << folder;
}

}  // namespace
}  // namespace vantile
