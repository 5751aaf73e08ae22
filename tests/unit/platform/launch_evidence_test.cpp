#include "vantile/platform/parsers/launch_evidence.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

using namespace std::string_literals;
using Names = std::vector<std::string>;

const std::string session = "/user.slice/user-1000.slice/user@1000.service/app.slice/";

Names identifiersOf(const std::string& unit) {
  const auto found = applicationUnitOf("0::" + session + unit + "\n");
  return found ? found->identifiers : Names{"none"};
}

TEST(ApplicationUnits, OfAScopeAreCalledByTheirIdentifier) {
  EXPECT_EQ(identifiersOf("app-org.x.Mail-4711.scope"), Names{"org.x.Mail"});
  EXPECT_EQ(identifiersOf("app-gnome-org.x.Mail-4711.scope"),
            (Names{"org.x.Mail", "gnome-org.x.Mail"}));
}

TEST(ApplicationUnits, OfAServiceAreCalledByTheirIdentifier) {
  EXPECT_EQ(identifiersOf("app-org.x.Mail.service"), Names{"org.x.Mail"});
  EXPECT_EQ(identifiersOf("app-org.x.Mail@4711.service"), Names{"org.x.Mail"});
  EXPECT_EQ(identifiersOf("app-gnome-org.x.Mail@autostart.service"),
            (Names{"org.x.Mail", "gnome-org.x.Mail"}));
}

TEST(ApplicationUnits, TellServicesFromScopes) {
  EXPECT_TRUE(applicationUnitOf("0::/app-a@1.service\n")->isService);
  EXPECT_FALSE(applicationUnitOf("0::/app-a-1.scope\n")->isService);
}

TEST(ApplicationUnits, EscapesStandForBytes) {
  EXPECT_EQ(identifiersOf("app-gnome-firefox\\x2desr-4711.scope"),
            (Names{"firefox-esr", "gnome-firefox-esr"}));
  EXPECT_EQ(identifiersOf("app-a\\x2-1.scope"), (Names{"a\\x2"}));
  EXPECT_EQ(identifiersOf("app-a\\xZZ-1.scope"), (Names{"a\\xZZ"}));
  EXPECT_EQ(identifiersOf("app-a\\-1.scope"), (Names{"a\\"}));
}

TEST(ApplicationUnits, ADashThatWasNotEscapedIsPartOfTheIdentifierOrBehindALauncher) {
  EXPECT_EQ(identifiersOf("app-firefox-esr-4711.scope"), (Names{"esr", "firefox-esr"}));
}

TEST(ApplicationUnits, OtherUnitsAreNone) {
  for (const auto* unit : {"vte-spawn-1.scope", "app.slice", "app-x.slice", "app-1.scope",
                           "app-.scope", "app--1.scope", "app-.service", "app-@x.service",
                           "dbus.service", "myapp-x-1.scope", "app-x-1.scope.d", "", "app-"})
    EXPECT_EQ(identifiersOf(unit), Names{"none"}) << unit;
}

TEST(ApplicationUnits, TheGroupIsThePathOfTheUnit) {
  EXPECT_EQ(applicationUnitOf("0::" + session + "app-a-1.scope\n")->group,
            session + "app-a-1.scope");
}

TEST(ApplicationUnits, GroupsThatAnApplicationMadeWithinBelongToIt) {
  const auto unit = applicationUnitOf("0::/s/app-a-1.scope/tabs/app.slice/3\n");
  EXPECT_EQ(unit->group, "/s/app-a-1.scope");
  EXPECT_EQ(applicationUnitOf("0::/s/app-a-1.scope/app-b-2.scope\n")->identifiers, Names{"b"});
}

TEST(ApplicationUnits, AreFoundOnWhicheverLine) {
  EXPECT_EQ(applicationUnitOf("12:cpu,cpuacct:/\n1:name=systemd:/app-a-1.scope\n0::/\n")->group,
            "/app-a-1.scope");
}

TEST(ApplicationUnits, MalformedTextHasNone) {
  for (const auto& text : {""s, "\n\n"s, "0:"s, "0::"s, "app-a-1.scope"s, "0:/app-a-1.scope"s,
                           "::app-a-1.scope"s, "\0\xFF"s})
    EXPECT_FALSE(applicationUnitOf(text)) << text;
}

std::optional<DesktopLaunch> launchOf(const std::string& entry, const std::string& pid) {
  return desktopLaunchOf("A=1\0"s + entry + "\0HOME=/\0"s + pid + "\0"s);
}

TEST(DesktopLaunches, AreInTheEnvironment) {
  const auto launch =
      launchOf("GIO_LAUNCHED_DESKTOP_FILE=/a/x.desktop", "GIO_LAUNCHED_DESKTOP_FILE_PID=41");
  ASSERT_TRUE(launch);
  EXPECT_EQ(launch->entry, "/a/x.desktop");
  EXPECT_EQ(launch->pid, 41);
}

TEST(DesktopLaunches, WithoutEitherPartAreNone) {
  EXPECT_FALSE(launchOf("GIO_LAUNCHED_DESKTOP_FILE=/a/x.desktop", "B=2"));
  EXPECT_FALSE(launchOf("B=2", "GIO_LAUNCHED_DESKTOP_FILE_PID=41"));
  EXPECT_FALSE(desktopLaunchOf(""));
}

TEST(DesktopLaunches, WithAPartThatIsMalformedAreNone) {
  for (const auto* pid : {"", "x", "41x", " 41", "0", "-1", "2147483648"})
    EXPECT_FALSE(
        launchOf("GIO_LAUNCHED_DESKTOP_FILE=/a/x.desktop", "GIO_LAUNCHED_DESKTOP_FILE_PID="s + pid))
        << pid;
  for (const auto* entry : {"", "x.desktop"})
    EXPECT_FALSE(
        launchOf("GIO_LAUNCHED_DESKTOP_FILE="s + entry, "GIO_LAUNCHED_DESKTOP_FILE_PID=41"));
}

TEST(DesktopLaunches, OtherVariablesAreNotTheirs) {
  EXPECT_FALSE(launchOf("X_GIO_LAUNCHED_DESKTOP_FILE=/a", "GIO_LAUNCHED_DESKTOP_FILE_PID=41"));
  EXPECT_FALSE(launchOf("A=GIO_LAUNCHED_DESKTOP_FILE=/a", "GIO_LAUNCHED_DESKTOP_FILE_PID=41"));
}

TEST(DesktopLaunches, AnEnvironmentThatWasCutOffIsReadAsFar) {
  const auto launch =
      desktopLaunchOf("GIO_LAUNCHED_DESKTOP_FILE_PID=41\0GIO_LAUNCHED_DESKTOP_FILE=/a\xFF"s);
  EXPECT_EQ(launch->entry, "/a\xFF");
}

TEST(Programs, AreTheFirstWordOfACommandLine) {
  EXPECT_EQ(programOf("gimp-2.10 %U"), "gimp-2.10");
  EXPECT_EQ(programOf("  /usr/bin/mail\t--new"), "/usr/bin/mail");
  EXPECT_EQ(programOf("mail"), "mail");
}

TEST(Programs, MayBeQuoted) {
  EXPECT_EQ(programOf("\"/opt/My Mail/mail\" %u"), "/opt/My Mail/mail");
  EXPECT_EQ(programOf("\"/opt/a\\\"b\\\\c\\$\\`\""), "/opt/a\"b\\c$`");
  EXPECT_EQ(programOf("\"/opt/unfinished"), "/opt/unfinished");
  EXPECT_EQ(programOf("mail\\"), "mail\\");
}

TEST(Programs, StandBehindAnEnvironmentThatIsSet) {
  EXPECT_EQ(programOf("env A=1 B=\"x y\" mail %u"), "mail");
  EXPECT_EQ(programOf("/usr/bin/env -i A=1 mail"), "mail");
  EXPECT_EQ(programOf("env"), std::nullopt);
  EXPECT_EQ(programOf("env A=1"), std::nullopt);
}

TEST(Programs, ThatRunWhateverTheyAreToldAreNone) {
  for (const auto* line :
       {"python3 /opt/mail.py", "/usr/bin/python3.11", "sh -c mail", "bash", "node x", "perl5.36",
        "env A=1 python3 x", "flatpak run org.x.Mail", "wine mail.exe", "java -jar mail.jar",
        "gjs -m x", "pkexec mail", "/usr/bin/xdg-open x"})
    EXPECT_EQ(programOf(line), std::nullopt) << line;
  for (const auto* line : {"pythonista", "shotwell", "bashful", "javaws", "nodepad"})
    EXPECT_EQ(programOf(line), line);
}

TEST(Programs, WithoutANameAreNone) {
  for (const auto* line : {"", " ", "\"\"", "/usr/bin/", "/"})
    EXPECT_EQ(programOf(line), std::nullopt) << line;
}

TEST(Executables, KeepTheirNameWhenTheFileWasReplaced) {
  EXPECT_EQ(executableOf("/usr/bin/mail"), "/usr/bin/mail");
  EXPECT_EQ(executableOf("/usr/bin/mail (deleted)"), "/usr/bin/mail");
  EXPECT_EQ(executableOf("/usr/bin/mail (deleted) (deleted)"), "/usr/bin/mail (deleted)");
  EXPECT_EQ(executableOf(""), "");
}

}  // namespace
}  // namespace vantile
