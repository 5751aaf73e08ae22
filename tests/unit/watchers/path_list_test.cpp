#include "vantile/watchers/path_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vantile {
namespace {

using Paths = std::vector<std::string>;

TEST(PathList, HoldsEachPathOnceInTheOrderOfAdding) {
  PathList list;
  EXPECT_TRUE(list.add("/b"));
  EXPECT_TRUE(list.add("/a"));
  EXPECT_FALSE(list.add("/b"));
  EXPECT_EQ(list.paths(), (Paths{"/b", "/a"}));
  EXPECT_EQ(list.size(), 2u);
  EXPECT_EQ(Paths(list.begin(), list.end()), list.paths());
}

TEST(PathList, KnowsWhatItHolds) {
  PathList list;
  EXPECT_TRUE(list.empty());
  EXPECT_FALSE(list.contains("/a"));
  list.add("/a");
  EXPECT_FALSE(list.empty());
  EXPECT_TRUE(list.contains("/a"));
  EXPECT_FALSE(list.contains("/A"));
}

TEST(PathList, TellsWhetherWhatIsRemovedWasThere) {
  PathList list;
  list.add("/a");
  list.add("/b");
  EXPECT_FALSE(list.remove("/c"));
  EXPECT_TRUE(list.remove("/a"));
  EXPECT_FALSE(list.remove("/a"));
  EXPECT_FALSE(list.contains("/a"));
  EXPECT_EQ(list.paths(), Paths{"/b"});
}

TEST(PathList, WhatIsAddedAgainComesLast) {
  PathList list;
  list.add("/a");
  list.add("/b");
  list.remove("/a");
  EXPECT_TRUE(list.add("/a"));
  EXPECT_EQ(list.paths(), (Paths{"/b", "/a"}));
}

TEST(PathList, RemovesAllThatAreUnwanted) {
  PathList list;
  for (const auto* path : {"/a", "/b", "/c", "/d"}) list.add(path);
  list.removeIf([](const std::string& path) { return path == "/a" || path == "/c"; });
  EXPECT_EQ(list.paths(), (Paths{"/b", "/d"}));
  EXPECT_FALSE(list.contains("/c"));
  EXPECT_TRUE(list.contains("/d"));
  EXPECT_TRUE(list.add("/c"));
}

TEST(PathList, IsEmptyOnceCleared) {
  PathList list;
  list.add("/a");
  list.clear();
  EXPECT_TRUE(list.empty());
  EXPECT_FALSE(list.contains("/a"));
  EXPECT_TRUE(list.add("/a"));
}

}  // namespace
}  // namespace vantile
