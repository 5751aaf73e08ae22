#include "vantile/platform/parsers/ip_address.h"

#include <gtest/gtest.h>

namespace vantile {
namespace {

using namespace std::string_literals;

/// Eight groups of 16 bits.
std::string groups(std::initializer_list<unsigned> values) {
  std::string bytes;
  for (const auto value : values) {
    bytes.push_back(static_cast<char>(value >> 8));
    bytes.push_back(static_cast<char>(value & 0xff));
  }
  return bytes;
}

TEST(IpAddress, FourBytesAreDecimalNumbersBetweenDots) {
  EXPECT_EQ(ipAddressText("\xC0\xA8\x01\x07"), "192.168.1.7");
  EXPECT_EQ(ipAddressText("\0\0\0\0"s), "0.0.0.0");
  EXPECT_EQ(ipAddressText("\xFF\xFF\xFF\xFF"), "255.255.255.255");
}

TEST(IpAddress, SixteenBytesAreHexadecimalGroupsWithoutLeadingZeros) {
  EXPECT_EQ(ipAddressText(groups({0x2001, 0xdb8, 1, 0x20, 0x300, 0xabcd, 0xf, 0x10})),
            "2001:db8:1:20:300:abcd:f:10");
}

TEST(IpAddress, TheLongestRunOfZerosIsLeftOutTheFirstOfEquals) {
  EXPECT_EQ(ipAddressText(groups({0xfe80, 0, 0, 0, 0, 0, 0, 1})), "fe80::1");
  EXPECT_EQ(ipAddressText(groups({0, 0, 0, 0, 0, 0, 0, 1})), "::1");
  EXPECT_EQ(ipAddressText(groups({0, 0, 0, 0, 0, 0, 0, 0})), "::");
  EXPECT_EQ(ipAddressText(groups({1, 0, 0, 2, 0, 0, 0, 3})), "1:0:0:2::3");
  EXPECT_EQ(ipAddressText(groups({1, 0, 0, 2, 3, 0, 0, 4})), "1::2:3:0:0:4");
  EXPECT_EQ(ipAddressText(groups({1, 2, 3, 4, 5, 6, 0, 0})), "1:2:3:4:5:6::");
}

TEST(IpAddress, ASingleZeroIsNotLeftOut) {
  EXPECT_EQ(ipAddressText(groups({1, 0, 2, 3, 4, 5, 6, 7})), "1:0:2:3:4:5:6:7");
}

TEST(IpAddress, AnOlderAddressInsideANewerOneIsShownAsSuch) {
  EXPECT_EQ(ipAddressText(groups({0, 0, 0, 0, 0, 0xffff, 0x0102, 0x03fe})), "::ffff:1.2.3.254");
  EXPECT_EQ(ipAddressText(groups({0, 0, 0, 0, 0, 0, 0x0102, 0x0304})), "::1.2.3.4");
}

TEST(IpAddress, AnyOtherSizeIsNone) {
  EXPECT_EQ(ipAddressText(""), "");
  EXPECT_EQ(ipAddressText("abc"), "");
  EXPECT_EQ(ipAddressText(std::string(17, 'x')), "");
}

TEST(Ipv4Mask, HasAsManyBitsAsThePrefix) {
  EXPECT_EQ(ipv4MaskText(0), "0.0.0.0");
  EXPECT_EQ(ipv4MaskText(1), "128.0.0.0");
  EXPECT_EQ(ipv4MaskText(20), "255.255.240.0");
  EXPECT_EQ(ipv4MaskText(24), "255.255.255.0");
  EXPECT_EQ(ipv4MaskText(32), "255.255.255.255");
  EXPECT_EQ(ipv4MaskText(200), "255.255.255.255");
}

TEST(HardwareAddress, IsTwoDigitsAByte) {
  EXPECT_EQ(hexadecimal("\x52\x54\x00\xA1\xB2\xC3"s), "525400a1b2c3");
  EXPECT_EQ(hexadecimal(""), "");
}

}  // namespace
}  // namespace vantile
