#include "vantile/platform/parsers/firefox_profiles.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using testing::fixture;

using Profiles = std::vector<std::string>;

TEST(FirefoxInstalls, NameTheProfilesOfTheInstallations) {
  EXPECT_EQ(parseFirefoxInstalls(fixture("firefox-installs.ini")),
            (Profiles{"k3x9abcd.default-esr", "profiles/q7zz.work"}));
}

TEST(FirefoxInstalls, AProfileOfTwoInstallationsIsNamedOnce) {
  EXPECT_EQ(parseFirefoxInstalls("[A]\nDefault=p\n[B]\nDefault=q\n[C]\nDefault=p\n"),
            (Profiles{"p", "q"}));
}

TEST(FirefoxInstalls, WhatIsNoProfileIsNotNamed) {
  EXPECT_EQ(parseFirefoxInstalls("Default=a\n[A]\n#Default=b\n;Default=c\ndefault=d\nDefault\n"
                                 "Default=\n[B]\nMyDefault=e\n"),
            Profiles());
  EXPECT_EQ(parseFirefoxInstalls(std::string("[A]\nDefault=a\0b\n", 16)), Profiles());
  EXPECT_EQ(parseFirefoxInstalls("[A]\nDefault=" + std::string(5000, 'x') + "\n"), Profiles());
}

TEST(FirefoxInstalls, OfAnotherSystemsLinesAreRead) {
  EXPECT_EQ(parseFirefoxInstalls("[A]\r\n  Default=p\r\n"), Profiles{"p"});
}

TEST(FirefoxInstalls, CutOffAreHalfWritten) {
  EXPECT_EQ(parseFirefoxInstalls(""), std::nullopt);
  EXPECT_EQ(parseFirefoxInstalls("[A]\nDefault=pro"), std::nullopt);
}

TEST(FirefoxProfiles, TheOneMarkedAsTheDefaultIsNamed) {
  EXPECT_EQ(parseFirefoxProfiles(fixture("firefox-profiles.ini")), Profiles{"0a1b2c3d.default"});
}

TEST(FirefoxProfiles, TheOnlyOneNeedsNoMark) {
  EXPECT_EQ(parseFirefoxProfiles("[General]\nPath=x\n[Profile0]\nName=a\nPath=/p/a b\n"),
            Profiles{"/p/a b"});
}

TEST(FirefoxProfiles, OfSeveralWithoutAMarkNoneIsNamed) {
  EXPECT_EQ(parseFirefoxProfiles("[Profile0]\nPath=a\n[Profile1]\nPath=b\nDefault=0\n"),
            Profiles());
}

TEST(FirefoxProfiles, AnInstallationsDefaultIsNoMark) {
  EXPECT_EQ(parseFirefoxProfiles("[Install1]\nDefault=1\nPath=i\n[Profile0]\nPath=a\n[Profile1]\n"
                                 "Path=b\n"),
            Profiles());
}

TEST(FirefoxProfiles, CutOffAreHalfWritten) {
  EXPECT_EQ(parseFirefoxProfiles(""), std::nullopt);
  EXPECT_EQ(parseFirefoxProfiles("[Profile0]\nPath=ab"), std::nullopt);
}

}  // namespace
}  // namespace vantile
