#include "vantile/platform/system_facts.h"

#include "seam.h"

namespace vantile {
namespace {

class SystemFactsSeam : public Seam {
 protected:
  SystemFactsSeam() {
    auto& machine = fakes::machine;
    machine.computerName = u"Ada\u2019s Mac";
    machine.localHostName = u"Adas-Mac";
    machine.userName = u"ada";
    machine.fullUserName = u"Ada \u00DCbung";
    machine.physicalMemory = 17179869184;
  }
};

// That what is autoreleased has a pool to be released by the fakes check, and that nothing is left
// of it the end of each test.

TEST_F(SystemFactsSeam, NamesAreTheSystems) {
  EXPECT_EQ(systemFacts()->computerName(), "Ada\u2019s Mac");
  EXPECT_EQ(systemFacts()->hostName(), "Adas-Mac");
  EXPECT_EQ(systemFacts()->userName(), "ada");
  EXPECT_EQ(systemFacts()->fullUserName(), "Ada \u00DCbung");
}

TEST_F(SystemFactsSeam, NumbersAreTheProcessInformations) {
  EXPECT_EQ(systemFacts()->operatingSystem(), 5);
  EXPECT_EQ(systemFacts()->physicalMemory(), 17179869184u);
}

TEST_F(SystemFactsSeam, ThereIsNoVersionTextSinceTheKernelsReleaseTells) {
  EXPECT_EQ(systemFacts()->versionText(), std::nullopt);
}

TEST_F(SystemFactsSeam, NamesThatTheSystemDoesNotKnowAreNone) {
  fakes::machine.computerName.reset();
  fakes::machine.localHostName.reset();
  fakes::machine.userName.reset();
  fakes::machine.fullUserName.reset();
  EXPECT_EQ(systemFacts()->computerName(), std::nullopt);
  EXPECT_EQ(systemFacts()->hostName(), std::nullopt);
  EXPECT_EQ(systemFacts()->userName(), std::nullopt);
  EXPECT_EQ(systemFacts()->fullUserName(), std::nullopt);
}

TEST_F(SystemFactsSeam, NamesWithoutAUtf8FormAreNone) {
  fakes::machine.computerName = fakes::machine.userName = std::u16string{u'a', char16_t{0xD800}};
  EXPECT_EQ(systemFacts()->computerName(), std::nullopt);
  EXPECT_EQ(systemFacts()->userName(), std::nullopt);
}

TEST_F(SystemFactsSeam, WhatRaisesAnExceptionIsNotTold) {
  for (const char* const selector : {"currentHost", "localizedName"}) {
    fakes::machine.raisesAt = selector;
    EXPECT_EQ(systemFacts()->hostName(), std::nullopt) << selector;
  }
  fakes::machine.raisesAt = "operatingSystem";
  EXPECT_EQ(systemFacts()->operatingSystem(), std::nullopt);
  EXPECT_EQ(systemFacts()->physicalMemory(), 17179869184u);
  fakes::machine.raisesAt = "physicalMemory";
  EXPECT_EQ(systemFacts()->physicalMemory(), std::nullopt);
  EXPECT_EQ(systemFacts()->operatingSystem(), 5);
}

TEST_F(SystemFactsSeam, WithoutItsClassAFactIsNotTold) {
  fakes::machine.classes.clear();
  EXPECT_EQ(systemFacts()->hostName(), std::nullopt);
  EXPECT_EQ(systemFacts()->operatingSystem(), std::nullopt);
  EXPECT_EQ(systemFacts()->physicalMemory(), std::nullopt);
  EXPECT_EQ(systemFacts()->userName(), "ada");
}

}  // namespace
}  // namespace vantile
