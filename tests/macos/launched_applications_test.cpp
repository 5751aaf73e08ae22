#include "vantile/platform/launched_applications.h"

#include <stdexcept>

#include "seam.h"

namespace vantile {
namespace {

using fakes::PropertyList;
using Dictionary = PropertyList::Dictionary;

class LaunchedApplicationsSeam : public Seam {
 protected:
  static void answer(PropertyList::Array applications) {
    fakes::machine.launchedApplications = PropertyList{std::move(applications)};
  }
  static PropertyList application(std::u16string name, std::u16string path, std::int64_t pid) {
    return {Dictionary{{u"NSApplicationName", {std::move(name)}},
                       {u"NSApplicationPath", {std::move(path)}},
                       {u"NSApplicationBundleIdentifier", {u"com.example"}},
                       {u"NSApplicationProcessIdentifier", {pid}}}};
  }
  static std::optional<std::vector<LaunchedApplication>> list() {
    return systemLaunchedApplications()->list();
  }
};

TEST_F(LaunchedApplicationsSeam, AreListedInTheWorkspacesOrder) {
  answer({application(u"Échecs", u"/Applications/Chess.app", 41),
          application(u"Mail", u"/Applications/Mail.app", 7)});
  EXPECT_EQ(list(), (std::vector<LaunchedApplication>{{"Échecs", "/Applications/Chess.app", 41},
                                                      {"Mail", "/Applications/Mail.app", 7}}));
}

TEST_F(LaunchedApplicationsSeam, WithoutAnAnswerThereIsNone) {
  EXPECT_EQ(list(), std::nullopt);
  fakes::machine.classes.erase("NSWorkspace");
  answer({});
  EXPECT_EQ(list(), std::nullopt);
}

TEST_F(LaunchedApplicationsSeam, MayBeNone) {
  answer({});
  EXPECT_EQ(list()->size(), 0u);
}

TEST_F(LaunchedApplicationsSeam, WhatIsNotToldIsAbsent) {
  answer({{Dictionary{}}});
  EXPECT_EQ(list(), (std::vector<LaunchedApplication>{{std::nullopt, std::nullopt, 0}}));
}

TEST_F(LaunchedApplicationsSeam, WhatIsOfAnotherKindIsAbsent) {
  answer({{Dictionary{{u"NSApplicationName", {true}},
                      {u"NSApplicationPath", {std::u16string(1, char16_t{0xDC00})}},
                      {u"NSApplicationProcessIdentifier", {u"41"}}}},
          {true}});
  EXPECT_EQ(list(), (std::vector<LaunchedApplication>{{std::nullopt, std::nullopt, 0}}));
}

TEST_F(LaunchedApplicationsSeam, AnIdentifierHasThirtyTwoBits) {
  answer({application(u"a", u"b", -1), application(u"a", u"b", 0x100000007)});
  EXPECT_EQ(list()->at(0).pid, -1);
  EXPECT_EQ(list()->at(1).pid, 7);
}

TEST_F(LaunchedApplicationsSeam, AreWithoutFactsWhereAnObjectCantBeMade) {
  answer({application(u"Mail", u"/Applications/Mail.app", 7)});
  fakes::machine.refuses = {"CFStringCreateWithBytes"};
  EXPECT_EQ(list(), (std::vector<LaunchedApplication>{{std::nullopt, std::nullopt, 0}}));
}

TEST_F(LaunchedApplicationsSeam, ExceptionsComeAsExceptionsOfThisLanguage) {
  answer({});
  for (const char* const selector : {"sharedWorkspace", "launchedApplications"}) {
    fakes::machine.raisesAt = selector;
    EXPECT_THROW(list(), std::runtime_error) << selector;
  }
}

}  // namespace
}  // namespace vantile
