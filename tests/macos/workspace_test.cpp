#include "vantile/platform/workspace.h"

#include <stdexcept>

#include "seam.h"

namespace vantile {
namespace {

class WorkspaceSeam : public Seam {
 protected:
  static void postAll() { systemWorkspace()->post("renamed", &fakes::machine, "/Users/ada"); }

  /// Whether nothing is told of where that function fails, and nothing thrown.
  static bool isSilentWithout(const char* function) {
    fakes::machine.refuses = {function};
    postAll();
    fakes::machine.refuses.clear();
    return fakes::machine.posts.empty();
  }
};

// That each of these pushes and pops a pool the fakes and the end of each test check: nothing may
// be autoreleased without one, and none may be left.

TEST_F(WorkspaceSeam, IsToldOfAPath) {
  systemWorkspace()->noteFileSystemChanged("/Users/ada/Übung");
  EXPECT_EQ(fakes::machine.notedPaths, std::vector<std::string>{"/Users/ada/Übung"});
}

TEST_F(WorkspaceSeam, IsToldOfAPathThatIsNotUtf8AsTheSystemReadsIt) {
  fakes::machine.decodesAllPaths = true;
  systemWorkspace()->noteFileSystemChanged("/Users/ada/\xDC");
  EXPECT_EQ(fakes::machine.notedPaths, std::vector<std::string>{"/Users/ada/Ü"});
}

TEST_F(WorkspaceSeam, IsNotToldOfAPathThatTheSystemCantRead) {
  systemWorkspace()->noteFileSystemChanged("/Users/ada/\xFF");
  systemWorkspace()->post("changed", nullptr, "/Users/ada/\xFF");
  EXPECT_TRUE(fakes::machine.notedPaths.empty());
  EXPECT_TRUE(fakes::machine.posts.empty());
}

TEST_F(WorkspaceSeam, IsPostedANotificationWithThePointerAndThePath) {
  const int object = 0;
  systemWorkspace()->post("changed", &object, "/Users/ada/Übung");
  EXPECT_EQ(fakes::machine.posts,
            std::vector{(fakes::Post{"changed", &object, {{"path", "/Users/ada/Übung"}}})});
}

TEST_F(WorkspaceSeam, IsPostedNothingOfANameThatIsNotUtf8) {
  systemWorkspace()->post("\xFF", nullptr, "/Users/ada");
  EXPECT_TRUE(fakes::machine.posts.empty());
}

TEST_F(WorkspaceSeam, IsPostedNothingWhereAnObjectCantBeMade) {
  EXPECT_TRUE(isSilentWithout("CFStringCreateWithBytes"));
  EXPECT_TRUE(isSilentWithout("CFDictionaryCreate"));
  postAll();
  EXPECT_EQ(fakes::machine.posts.size(), 1u);
}

TEST_F(WorkspaceSeam, IsPostedWithoutTheObjectWhereItsClassIsMissing) {
  fakes::machine.classes.erase("NSValue");
  postAll();
  EXPECT_EQ(fakes::machine.posts,
            std::vector{(fakes::Post{"renamed", nullptr, {{"path", "/Users/ada"}}})});
}

TEST_F(WorkspaceSeam, IsLeftAloneWhereThereIsNone) {
  fakes::machine.classes.erase("NSWorkspace");
  systemWorkspace()->noteFileSystemChanged("/Users/ada");
  postAll();
  EXPECT_TRUE(fakes::machine.notedPaths.empty());
  EXPECT_TRUE(fakes::machine.posts.empty());
}

TEST_F(WorkspaceSeam, ItsExceptionsComeAsExceptionsOfThisLanguage) {
  for (const char* const selector : {"sharedWorkspace", "noteFileSystemChanged:"}) {
    fakes::machine.raisesAt = selector;
    EXPECT_THROW(systemWorkspace()->noteFileSystemChanged("/Users/ada"), std::runtime_error)
        << selector;
  }
  for (const char* const selector : {"valueWithPointer:", "sharedWorkspace", "notificationCenter",
                                     "postNotificationName:object:userInfo:"}) {
    fakes::machine.raisesAt = selector;
    EXPECT_THROW(postAll(), std::runtime_error) << selector;
  }
}

TEST_F(WorkspaceSeam, AnExceptionTellsWhatWasAskedFor) {
  fakes::machine.raisesAt = "noteFileSystemChanged:";
  try {
    systemWorkspace()->noteFileSystemChanged("/Users/ada");
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "noteFileSystemChanged: raised an exception");
  }
}

}  // namespace
}  // namespace vantile
