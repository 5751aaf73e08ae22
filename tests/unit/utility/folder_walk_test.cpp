#include "vantile/utility/folder_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "fakes/folder_tree.h"

namespace vantile {
namespace {

using testing::FolderTree;
using Paths = std::vector<std::string>;

/// Walks a tree in memory and keeps what it came to.
struct FolderWalk : ::testing::Test {
  bool walk(const char* path = "/root") {
    return walkFolder(tree, path, stop, [this](const WalkedEntry& entry) {
      visited.emplace_back(entry.path());
      return onVisit ? onVisit(entry) : Visit::enter;
    });
  }
  std::size_t position(const std::string& path) const {
    return static_cast<std::size_t>(std::find(visited.begin(), visited.end(), path) -
                                    visited.begin());
  }

  FolderTree tree;
  std::int32_t* stop = nullptr;
  std::function<Visit(const WalkedEntry&)> onVisit;
  Paths visited;
};

TEST_F(FolderWalk, ComesToEverythingAtEveryDepth) {
  tree.file("a/b/c.txt");
  tree.file("x.txt");
  EXPECT_TRUE(walk());
  EXPECT_EQ(visited, (Paths{"/root/a", "/root/x.txt", "/root/a/b", "/root/a/b/c.txt"}));
}

TEST_F(FolderWalk, ComesToAFolderBeforeWhatIsInIt) {
  for (const char* path : {"a/a/a", "b/a", "a/b", "c"}) tree.folder(path);
  walk();
  for (const auto& path : visited)
    EXPECT_LE(position(path.substr(0, path.rfind('/'))) % visited.size(), position(path));
}

TEST_F(FolderWalk, TakesEntriesInTheSystemsOrder) {
  for (const char* name : {"z", "a", "m", "b", "y", "c", "x"}) tree.file(name);
  walk();
  EXPECT_EQ(visited,
            (Paths{"/root/z", "/root/a", "/root/m", "/root/b", "/root/y", "/root/c", "/root/x"}));
}

TEST_F(FolderWalk, AFolderPassedByIsNotEntered) {
  tree.file("in/f");
  tree.file("out/f");
  onVisit = [](const WalkedEntry& entry) {
    return std::string_view(entry.name()) == "out" ? Visit::pass : Visit::enter;
  };
  walk();
  EXPECT_EQ(visited, (Paths{"/root/in", "/root/out", "/root/in/f"}));
  EXPECT_EQ(std::count(tree.log.begin(), tree.log.end(), "child out"), 0);
}

TEST_F(FolderWalk, OnlyFoldersAreEntered) {
  tree.file("f");
  tree.link("l");
  tree.other("o");
  walk();
  EXPECT_EQ(visited.size(), 3u);
  EXPECT_EQ(tree.log, Paths{"open /root"});
}

TEST_F(FolderWalk, AnEntryHasItsNameKindFactsAndText) {
  tree.text("a/x.desktop", "hello");
  onVisit = [](const WalkedEntry& entry) {
    if (entry.kind() == FileKind::folder) return Visit::enter;
    EXPECT_STREQ(entry.name(), "x.desktop");
    EXPECT_EQ(entry.kind(), FileKind::regular);
    EXPECT_EQ(entry.facts()->bytes, 5u);
    EXPECT_EQ(entry.text(4), "hell");
    EXPECT_STREQ(entry.path(), "/root/a/x.desktop");
    return Visit::pass;
  };
  walk();
  EXPECT_EQ(visited.size(), 2u);
}

TEST_F(FolderWalk, ContinuesThePathAsItWasGiven) {
  tree.file("a/f");
  walk("/root/a");
  walk("/root/a/");
  EXPECT_EQ(visited, (Paths{"/root/a/f", "/root/a/f"}));
}

TEST_F(FolderWalk, OfTheRootOfTheMachineHasNoDoubleSlash) {
  FolderTree machine("/");
  machine.file("f");
  walkFolder(machine, "/", nullptr, [this](const WalkedEntry& entry) {
    visited.emplace_back(entry.path());
    return Visit::enter;
  });
  EXPECT_EQ(visited, Paths{"/f"});
}

TEST_F(FolderWalk, NamesMayBeAnyBytes) {
  const Paths names = {"\xFF\xFE", "a\nb", "-rf", " ", "...", std::string(255, 'n')};
  for (const auto& name : names) tree.file(name + "/inside");
  walk();
  for (const auto& name : names) {
    EXPECT_LT(position("/root/" + name), visited.size());
    EXPECT_LT(position("/root/" + name + "/inside"), visited.size());
  }
}

TEST_F(FolderWalk, AnEmptyFolderHasNothing) {
  EXPECT_TRUE(walk());
  EXPECT_TRUE(visited.empty());
}

TEST_F(FolderWalk, OfNoFolderDoesNotBegin) {
  tree.file("f");
  tree.refuse("");
  EXPECT_FALSE(walk(nullptr));
  EXPECT_FALSE(walk(""));
  EXPECT_FALSE(walk("/elsewhere"));
  EXPECT_FALSE(walk("/root/f"));
  EXPECT_FALSE(walk("/root"));
  EXPECT_TRUE(visited.empty());
}

TEST_F(FolderWalk, AFolderThatCantBeOpenedIsComeToAndPassed) {
  tree.file("closed/f");
  tree.file("open/f");
  tree.refuse("closed");
  walk();
  EXPECT_EQ(visited, (Paths{"/root/closed", "/root/open", "/root/open/f"}));
}

TEST_F(FolderWalk, AListingThatFailsHalfWayKeepsWhatItRead) {
  for (const char* path : {"a/one", "a/two/inside", "a/three", "a/four", "a/five", "b/f"})
    tree.file(path);
  tree.failListingAfter("a", 4);
  walk();
  EXPECT_EQ(visited, (Paths{"/root/a", "/root/b", "/root/a/one", "/root/a/two", "/root/a/three",
                            "/root/a/four", "/root/a/two/inside", "/root/b/f"}));
}

TEST_F(FolderWalk, AStopFlagSetBeforeLetsNothingBegin) {
  tree.file("f");
  std::int32_t flag = 1;
  stop = &flag;
  EXPECT_FALSE(walk());
  EXPECT_TRUE(visited.empty());
  EXPECT_TRUE(tree.log.empty());
  EXPECT_EQ(flag, 1);
}

TEST_F(FolderWalk, AnyStopFlagButZeroStops) {
  tree.file("f");
  for (std::int32_t flag : {-1, 2, 1 << 30}) {
    stop = &flag;
    EXPECT_FALSE(walk());
  }
  EXPECT_TRUE(visited.empty());
}

TEST_F(FolderWalk, AStopFlagSetDuringAListingEndsIt) {
  for (int i = 0; i < 20; ++i) tree.file(std::to_string(i));
  std::int32_t flag = 0;
  stop = &flag;
  onVisit = [&](const WalkedEntry&) {
    if (visited.size() == 2) flag = 1;
    return Visit::enter;
  };
  EXPECT_TRUE(walk());
  EXPECT_EQ(visited.size(), 2u);
}

TEST_F(FolderWalk, AStopFlagSetAtTheLastEntryEntersNothingMore) {
  tree.file("a/f");
  std::int32_t flag = 0;
  stop = &flag;
  onVisit = [&](const WalkedEntry&) {
    flag = 1;
    return Visit::enter;
  };
  walk();
  EXPECT_EQ(tree.log, Paths{"open /root"});
}

TEST_F(FolderWalk, AStopFlagSetOnTheWayDownLeavesNoFolderOpen) {
  tree.chain(100);
  std::int32_t flag = 0;
  stop = &flag;
  onVisit = [&](const WalkedEntry&) {
    if (visited.size() == 60) flag = 1;
    return Visit::enter;
  };
  walk();
  EXPECT_EQ(visited.size(), 60u);
  EXPECT_EQ(tree.openFolders, 0u);
}

TEST_F(FolderWalk, ATreeOfAnyDepthTakesABoundedNumberOfOpenFolders) {
  const auto deepest = tree.chain(10000);
  std::size_t count = 0, longest = 0;
  walkFolder(tree, "/root", nullptr, [&](const WalkedEntry& entry) {
    if (++count == 10000) longest = std::strlen(entry.path());
    return Visit::enter;
  });
  EXPECT_EQ(count, 10000u);
  EXPECT_EQ(longest, std::strlen("/root/") + deepest.size());
  EXPECT_LE(tree.mostOpenFolders, 40u);
  EXPECT_EQ(tree.openFolders, 0u);
}

TEST_F(FolderWalk, NoPathIsLookedUpAgainFromItsBeginning) {
  tree.chain(100);
  walk();
  EXPECT_EQ(std::count(tree.log.begin(), tree.log.end(), "open /root"), 1);
  EXPECT_EQ(std::count(tree.log.begin(), tree.log.end(), "child d"), 100);
}

TEST_F(FolderWalk, FoldersClosedOnTheWayDownAreGoneOnWithOnTheWayUp) {
  std::string path;
  for (int level = 0; level < 200; ++level) {
    tree.folder(path + "down");
    tree.file(path + "later/f");
    path += "down/";
  }
  walk();
  EXPECT_EQ(visited.size(), 600u);
  EXPECT_EQ(std::count_if(visited.begin(), visited.end(),
                          [](const auto& each) { return each.ends_with("/later/f"); }),
            200);
  EXPECT_LT(position("/root/later/f"), visited.size());
}

TEST_F(FolderWalk, AnExceptionOfTheVisitorLeavesNoFolderOpen) {
  tree.file("a/b/f");
  onVisit = [](const WalkedEntry& entry) -> Visit {
    if (entry.kind() == FileKind::regular) throw std::runtime_error("enough");
    return Visit::enter;
  };
  EXPECT_THROW(walk(), std::runtime_error);
  EXPECT_EQ(tree.openFolders, 0u);
}

TEST_F(FolderWalk, AWalkMayBeginInsideAnother) {
  tree.file("a/f");
  tree.file("b/f");
  onVisit = [this](const WalkedEntry& entry) {
    if (entry.kind() == FileKind::folder) {
      const std::string path = entry.path();
      walkFolder(tree, path.c_str(), nullptr, [this](const WalkedEntry& inner) {
        visited.push_back("inner " + std::string(inner.path()));
        return Visit::enter;
      });
      EXPECT_EQ(path, entry.path());
    }
    return Visit::enter;
  };
  walk();
  EXPECT_EQ(visited, (Paths{"/root/a", "inner /root/a/f", "/root/b", "inner /root/b/f", "/root/a/f",
                            "/root/b/f"}));
}

}  // namespace
}  // namespace vantile
