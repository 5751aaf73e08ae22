// The servers of a service, after a resolver's file that the tests write.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "live/network_namespace.h"
#include "live/opened_configuration.h"

namespace vantile {
namespace {

using testing::addPair;
using testing::comesToHold;
using testing::inNetworkNamespace;
using testing::ip;
using testing::Opened;
using testing::Texts;

/// A machine with a default route, whose resolver's file says what a test writes.
struct Resolving : Opened {
  void write(const std::string& path, const std::string& text) {
    const auto whole = folder.path(path);
    std::filesystem::create_directories(std::filesystem::path(whole).parent_path());
    std::ofstream(whole) << text;
  }
  bool comesToBe(const Texts& expected) {
    return comesToHold([&] { return servers("va") == expected; });
  }
};

void withRoute() {
  // Its own addresses would be told later, and the servers be looked at with them.
  std::ofstream("/proc/sys/net/ipv6/conf/default/disable_ipv6") << "1";
  addPair("va", "vb");
  ip("addr add 10.1.0.2/24 dev va");
  ip("route add default via 10.1.0.1 dev va");
}

TEST(LiveResolver, ServersFollowTheFileHoweverItIsWritten) {
  inNetworkNamespace([] {
    withRoute();
    Resolving opened;
    EXPECT_EQ(opened.servers("va"), Texts{});
    opened.write("resolv.conf", "nameserver 10.0.0.1\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.1"}));
    opened.write("resolv.conf", "nameserver 10.0.0.2\n");  // of the same size
    EXPECT_TRUE(opened.comesToBe({"10.0.0.2"}));
    opened.write("new", "nameserver 10.0.0.3\nnameserver ::1\n");
    std::filesystem::rename(opened.folder.path("new"), opened.folder.path("resolv.conf"));
    EXPECT_TRUE(opened.comesToBe({"10.0.0.3", "::1"}));
    std::filesystem::remove(opened.folder.path("resolv.conf"));
    EXPECT_TRUE(opened.comesToBe({}));
  });
}

TEST(LiveResolver, ServersBehindTheStubAreThoseOfItsList) {
  inNetworkNamespace([] {
    withRoute();
    Resolving opened;
    opened.write("resolv.conf", "nameserver 127.0.0.53\noptions edns0\n");
    EXPECT_TRUE(opened.comesToBe({"127.0.0.53"}));
    opened.write("run/resolv.conf", "nameserver 10.0.0.4\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.4"}));
    opened.write("run/resolv.conf", "nameserver 10.0.0.5\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.5"}));
    opened.write("resolv.conf", "nameserver 10.0.0.6\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.6"}));
  });
}

TEST(LiveResolver, ALinkElsewhereIsFollowed) {
  inNetworkNamespace([] {
    withRoute();
    Resolving opened;
    opened.write("elsewhere/one", "nameserver 10.0.0.7\n");
    opened.write("elsewhere/two", "nameserver 10.0.0.8\n");
    std::filesystem::create_symlink("elsewhere/one", opened.folder.path("resolv.conf"));
    EXPECT_TRUE(opened.comesToBe({"10.0.0.7"}));
    opened.write("elsewhere/one", "nameserver 10.0.0.9\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.9"}));
    std::filesystem::create_symlink("elsewhere/two", opened.folder.path("link"));
    std::filesystem::rename(opened.folder.path("link"), opened.folder.path("resolv.conf"));
    EXPECT_TRUE(opened.comesToBe({"10.0.0.8"}));
  });
}

TEST(LiveResolver, ALinkToALinkIsFollowedAtEveryStep) {
  inNetworkNamespace([] {
    withRoute();
    Resolving opened;
    ASSERT_TRUE(comesToHold([&] { return opened.active("va") == true; }));
    const auto link = [&opened](const std::string& target, const std::string& path) {
      const auto whole = opened.folder.path(path), made = whole + ".new";
      std::filesystem::create_directories(std::filesystem::path(whole).parent_path());
      std::filesystem::create_symlink(target, made);
      std::filesystem::rename(made, whole);
    };
    opened.write("three/one", "nameserver 10.0.0.1\n");
    opened.write("three/two", "nameserver 10.0.0.2\n");
    opened.write("four/two", "nameserver 10.0.0.3\n");
    link("../three", "aside/folder");
    link("../aside/folder/one", "two/step");
    link(opened.folder.path("two/step"), "one/step");
    link("one/step", "resolv.conf");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.1"}));
    link("../aside/folder/two", "two/step");  // in the middle of the way
    EXPECT_TRUE(opened.comesToBe({"10.0.0.2"}));
    link("../four", "aside/folder");  // a folder on the way
    EXPECT_TRUE(opened.comesToBe({"10.0.0.3"}));
    opened.write("four/two", "nameserver 10.0.0.4\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.4"}));
    link("../aside/folder/missing", "two/step");
    EXPECT_TRUE(opened.comesToBe({}));
    opened.write("four/missing", "nameserver 10.0.0.5\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.5"}));
    link("../three/one", "one/step");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.1"}));
  });
}

TEST(LiveResolver, ALinkThatLeadsToItselfOrThroughAFileNamesNoServers) {
  inNetworkNamespace([] {
    withRoute();
    Resolving opened;
    opened.write("file", "nameserver 10.0.0.1\n");
    std::filesystem::create_symlink("file/further", opened.folder.path("resolv.conf"));
    comesToHold([] { return false; }, std::chrono::milliseconds(30));
    EXPECT_EQ(opened.servers("va"), Texts{});
    std::filesystem::remove(opened.folder.path("resolv.conf"));
    std::filesystem::create_symlink("resolv.conf", opened.folder.path("resolv.conf"));
    comesToHold([] { return false; }, std::chrono::milliseconds(30));
    EXPECT_EQ(opened.servers("va"), Texts{});
    std::filesystem::remove(opened.folder.path("resolv.conf"));
    opened.write("resolv.conf", "nameserver 10.0.0.2\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.2"}));
  });
}

TEST(LiveResolver, AFileThatIsWrittenUnderAnotherNameIsRead) {
  inNetworkNamespace([] {
    withRoute();
    Resolving opened;
    // As where the file is mounted from elsewhere: its folder is told nothing.
    opened.write("elsewhere/one", "nameserver 10.0.0.1\n");
    std::filesystem::create_hard_link(opened.folder.path("elsewhere/one"),
                                      opened.folder.path("resolv.conf"));
    EXPECT_TRUE(opened.comesToBe({"10.0.0.1"}));
    opened.write("elsewhere/one", "nameserver 10.0.0.22\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.22"}));
  });
}

TEST(LiveResolver, AFileThatIsWrittenWithinOneTickOfItsClockIsRead) {
  inNetworkNamespace([] {
    withRoute();
    Resolving opened;
    opened.write("resolv.conf", "nameserver 10.0.0.1\n");
    EXPECT_TRUE(opened.comesToBe({"10.0.0.1"}));
    const auto path = opened.folder.path("resolv.conf");
    const auto modified = std::filesystem::last_write_time(path);
    opened.write("resolv.conf", "nameserver 10.0.0.2\n");
    std::filesystem::last_write_time(path, modified);
    EXPECT_TRUE(opened.comesToBe({"10.0.0.2"}));
  });
}

}  // namespace
}  // namespace vantile
