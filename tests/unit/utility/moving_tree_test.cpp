// Trees that change while they are walked.

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "vantile/utility/folder_walk.h"

#include "fakes/folder_tree.h"

namespace vantile {
namespace {

using testing::FolderTree;
using Paths = std::vector<std::string>;

struct MovingTree : ::testing::Test {
  void walk() {
    EXPECT_TRUE(walkFolder(tree, "/root", nullptr, [this](const WalkedEntry& entry) {
      visited.emplace_back(entry.path());
      return Visit::enter;
    }));
    EXPECT_EQ(tree.openFolders, 0u);
  }
  bool cameTo(const std::string& path) const {
    return std::find(visited.begin(), visited.end(), path) != visited.end();
  }
  /// What happens once, when the folder called `name` is about to be entered.
  void before(const std::string& name, std::function<void()> change) {
    tree.beforeChild = [name, change = std::move(change)](const std::string& entered) mutable {
      if (entered == name && change) std::exchange(change, nullptr)();
    };
  }
  /// A chain of 100 folders with something left to do in every one of them on the way up, and
  /// "innermost" at its end.
  std::string deepTree() {
    std::string path;
    for (int level = 0; level < 100; ++level) {
      tree.folder(path + "d");
      tree.file(path + "rest/f");
      path += "d/";
    }
    tree.folder(path + "innermost");
    return path;
  }

  FolderTree tree;
  Paths visited;
};

std::string levels(int count) {
  std::string path;
  while (count-- > 0) path += path.empty() ? "d" : "/d";
  return path;
}

TEST_F(MovingTree, AFolderThatVanishesBeforeItIsEnteredIsPassed) {
  tree.file("a/f");
  tree.file("b/f");
  before("a", [this] { tree.remove("a"); });
  walk();
  EXPECT_EQ(visited, (Paths{"/root/a", "/root/b", "/root/b/f"}));
}

TEST_F(MovingTree, AFolderThatBecomesALinkIsNotFollowed) {
  tree.file("a/f");
  tree.file("b/f");
  before("a", [this] { tree.replaceByLink("a"); });
  walk();
  EXPECT_EQ(visited, (Paths{"/root/a", "/root/b", "/root/b/f"}));
}

TEST_F(MovingTree, AFolderThatMovedAwayWhileOpenIsGoneOnWith) {
  tree.file("a/b/f");
  tree.file("c/f");
  before("b", [this] { tree.move("a", "c/a"); });
  walk();
  EXPECT_TRUE(cameTo("/root/a/b/f"));
  EXPECT_TRUE(cameTo("/root/c/f"));
}

TEST_F(MovingTree, AnUnchangedDeepTreeIsWalkedWhole) {
  deepTree();
  walk();
  EXPECT_EQ(visited.size(), 301u);
}

TEST_F(MovingTree, WhereAClosedFolderIsNotAroundAnyMoreTheWalkGoesOnFurtherOut) {
  deepTree();
  before("innermost", [this] { tree.move(levels(50), "elsewhere"); });
  walk();
  EXPECT_TRUE(cameTo("/root/" + levels(50) + "/rest/f"));
  EXPECT_FALSE(cameTo("/root/" + levels(49) + "/rest/f"));
  EXPECT_TRUE(cameTo("/root/rest/f"));
}

TEST_F(MovingTree, AnotherFolderInThePlaceOfAClosedOneIsNotTakenForIt) {
  deepTree();
  before("innermost", [this] {
    tree.move(levels(50), "other/d");
    tree.file("other/rest/not mine");
  });
  walk();
  for (const auto& path : visited) {
    if (path.starts_with("/root/other")) continue;
    EXPECT_EQ(path.find("not mine"), path.npos) << path;
  }
}

TEST_F(MovingTree, AParentThatCantBeReachedEndsNothingFurtherOut) {
  deepTree();
  tree.refuseParentOf(levels(50));
  walk();
  EXPECT_TRUE(cameTo("/root/" + levels(50) + "/rest/f"));
  EXPECT_TRUE(cameTo("/root/rest/f"));
}

TEST_F(MovingTree, AFolderWithoutAnIdentityIsKeptOpenRatherThanLost) {
  deepTree();
  tree.refuseIdentityOnce(levels(50));
  walk();
  EXPECT_EQ(visited.size(), 301u);
}

TEST_F(MovingTree, PathsAreRightAgainFurtherOut) {
  deepTree();
  tree.file("z/f");
  before("innermost", [this] { tree.move(levels(50), "elsewhere"); });
  walk();
  EXPECT_TRUE(cameTo("/root/z/f"));
}

}  // namespace
}  // namespace vantile
