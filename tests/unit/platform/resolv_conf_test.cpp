#include "vantile/platform/parsers/resolv_conf.h"

#include <gtest/gtest.h>

#include "unit/platform/fixture.h"

namespace vantile {
namespace {

using Servers = std::vector<std::string>;

TEST(ResolvConf, NamesItsServersInOrder) {
  EXPECT_EQ(parseResolvConf(testing::fixture("resolv.conf")),
            (Servers{"192.168.1.1", "2001:db8::53", "fe80::1%eth0", "9.9.9.9"}));
}

TEST(ResolvConf, BehindTheAddressEverythingIsPassedOver) {
  EXPECT_EQ(parseResolvConf("nameserver 1.1.1.1 # the first\n"), Servers{"1.1.1.1"});
  EXPECT_EQ(parseResolvConf("nameserver\t 1.1.1.1\tmore\n"), Servers{"1.1.1.1"});
  EXPECT_EQ(parseResolvConf("nameserver 1.1.1.1\r\n"), Servers{"1.1.1.1"});
}

TEST(ResolvConf, ALineBeginsWithTheName) {
  EXPECT_TRUE(parseResolvConf(" nameserver 1.1.1.1\n").empty());
  EXPECT_TRUE(parseResolvConf("#nameserver 1.1.1.1\n").empty());
  EXPECT_TRUE(parseResolvConf("nameservers 1.1.1.1\n").empty());
  EXPECT_TRUE(parseResolvConf("nameserver1.1.1.1\n").empty());
}

TEST(ResolvConf, ALastLineNeedsNoNewline) {
  EXPECT_EQ(parseResolvConf("nameserver 1.1.1.1"), Servers{"1.1.1.1"});
}

TEST(ResolvConf, AServerCountsOnce) {
  EXPECT_EQ(parseResolvConf("nameserver 1.1.1.1\nnameserver ::1\nnameserver 1.1.1.1\n"),
            (Servers{"1.1.1.1", "::1"}));
}

TEST(ResolvConf, WhatIsNoAddressIsLeftOut) {
  EXPECT_TRUE(parseResolvConf("").empty());
  EXPECT_TRUE(parseResolvConf("nameserver\nnameserver \n").empty());
  EXPECT_TRUE(parseResolvConf("nameserver dns.example\n").empty());
  EXPECT_TRUE(parseResolvConf("nameserver 53\n").empty());
  EXPECT_TRUE(parseResolvConf("nameserver 1.1.1.1%eth0\n").empty());
  EXPECT_TRUE(parseResolvConf("nameserver \xFF\xFE:\n").empty());
}

TEST(ResolvConf, AnAddressIsWholeAndNoMore) {
  const auto isAddress = [](const std::string& text) {
    return parseResolvConf("nameserver " + text + "\n") == Servers{text};
  };
  for (const char* const address :
       {"0.0.0.0", "255.255.255.255", "::", "::1", "1::", "1:2:3:4:5:6:7:8", "1::8", "A:b::C",
        "::ffff:1.2.3.4", "1:2:3:4:5:6:7.8.9.10", "fe80::1%eth0", "1:2:3:4:5:6:7::"})
    EXPECT_TRUE(isAddress(address)) << address;
  for (const char* const address :
       {"1.2.3",    "1.2.3.4.5", "1.2.3.256",   "1.2.3.",   ".1.2.3",       "1..2.3",
        "1.2.3.04", "1.2.3.4x",  ":",           ":::",      "1:2",          "1:2:3:4:5:6:7:8:9",
        "1::2::3",  "12345::",   "1:",          ":1",       "::1:",         "1:2:3:4:5:6:7:8::",
        "g::",      "1.2.3.4::", "::1.2.3.4:5", "fe80::1%", "fe80::1%\x01", "fe80::1%eth0\r"})
    EXPECT_FALSE(isAddress(address)) << address;
}

TEST(ResolverStubs, AreThoseOfSystemdAlone) {
  EXPECT_TRUE(areStubs({"127.0.0.53"}));
  EXPECT_TRUE(areStubs({"127.0.0.53", "127.0.0.54"}));
  EXPECT_FALSE(areStubs({"127.0.0.53", "1.1.1.1"}));
  EXPECT_FALSE(areStubs({"127.0.0.1"}));
  EXPECT_FALSE(areStubs({}));
}

}  // namespace
}  // namespace vantile
