#include "vantile/sensors/smc.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "fakes/fake_sensors_ports.h"
#include "fakes/temporary_folder.h"

namespace vantile {
namespace {

using Log = std::vector<std::string>;

/// What a record or part of it is made of.
template <class Part>
bool isZero(const Part& part) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&part);
  return std::all_of(bytes, bytes + sizeof part, [](unsigned char byte) { return byte == 0; });
}

struct Smc : ::testing::Test {
  /// What standard output gets from `work`.
  template <class Work>
  static std::string printed(Work work) {
    ::testing::internal::CaptureStdout();
    work();
    return ::testing::internal::GetCapturedStdout();
  }
  double reading(std::uint8_t high, std::uint8_t low) {
    smc.bytes = {high, low};
    return SMCGetTemperature("TC0P");
  }

  testing::FakeSensorsPorts ports;
  testing::FakeSmcService& smc = *ports.smc;
};

using SmcOpen = Smc;

TEST_F(SmcOpen, OpensTheConnectionThatLaterCallsUse) {
  int result = 1;
  EXPECT_EQ(printed([&] { result = SMCOpen(); }), "");
  EXPECT_EQ(result, 0);
  SMCRecord in = {}, out = {};
  SMCCall(7, &in, &out);
  SMCClose();
  EXPECT_EQ(smc.log, (Log{"open", "call 7 on 41", "close 41"}));
}

TEST_F(SmcOpen, AServiceThatThrowsIsNone) {
  smc.throws = true;
  int result = 0;
  EXPECT_EQ(printed([&] { result = SMCOpen(); }), "Error: no SMC found\n");
  EXPECT_EQ(result, 1);
}

TEST_F(SmcOpen, ARefusedSearchPrintsItsResult) {
  smc.opening = {.matching = static_cast<std::int32_t>(0xe00002c2)};
  int result = 0;
  EXPECT_EQ(printed([&] { result = SMCOpen(); }),
            "Error: IOServiceGetMatchingServices() = e00002c2\n");
  EXPECT_EQ(result, 1);
}

TEST_F(SmcOpen, ASmallResultIsPaddedToEightDigits) {
  smc.opening = {.matching = 5};
  EXPECT_EQ(printed([] { SMCOpen(); }), "Error: IOServiceGetMatchingServices() = 00000005\n");
}

TEST_F(SmcOpen, AMachineWithoutAnSmcPrintsSo) {
  smc.opening = {};
  int result = 0;
  EXPECT_EQ(printed([&] { result = SMCOpen(); }), "Error: no SMC found\n");
  EXPECT_EQ(result, 1);
}

TEST_F(SmcOpen, AServiceThatCantBeOpenedPrintsItsResult) {
  smc.opening = {.found = true, .opened = static_cast<std::int32_t>(0xe00002c1)};
  int result = 0;
  EXPECT_EQ(printed([&] { result = SMCOpen(); }), "Error: IOServiceOpen() = e00002c1\n");
  EXPECT_EQ(result, 1);
}

TEST_F(SmcOpen, ALineIsThereAtOnce) {
  smc.opening = {};
  const testing::TemporaryFolder folder;
  std::fflush(stdout);
  const int before = ::dup(STDOUT_FILENO);
  const int file = ::open(folder.path("out").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
  ::dup2(file, STDOUT_FILENO);
  SMCOpen();
  std::string text(64, '\0');
  const auto size = ::pread(file, text.data(), text.size(), 0);
  std::fflush(stdout);
  ::dup2(before, STDOUT_FILENO);
  ::close(before);
  ::close(file);
  EXPECT_EQ(text.substr(0, static_cast<std::size_t>(std::max<ssize_t>(size, 0))),
            "Error: no SMC found\n");
}

TEST_F(SmcOpen, AFailureLeavesTheConnectionAsItWas) {
  SMCOpen();
  smc.opening = {.found = true, .opened = 3, .connection = 99};
  printed([] { SMCOpen(); });
  SMCClose();
  EXPECT_EQ(smc.log.back(), "close 41");
}

TEST_F(SmcOpen, ClosingGivesTheKernelsResult) {
  smc.closeResult = 17;
  EXPECT_EQ(SMCClose(), 17);
}

using SmcCallTest = Smc;

TEST_F(SmcCallTest, HasRoomForEightyBytesAndGivesTheResult) {
  smc.infoResult = 21;
  SMCRecord in = {}, out = {};
  in.command = 9;
  EXPECT_EQ(SMCCall(2, &in, &out), 21);
  EXPECT_EQ(smc.rooms.at(0), 80u);
}

TEST_F(SmcCallTest, WithoutARecordIsABadArgument) {
  SMCRecord record = {};
  EXPECT_EQ(SMCCall(2, nullptr, &record), static_cast<std::int32_t>(0xe00002c2));
  EXPECT_EQ(SMCCall(2, &record, nullptr), static_cast<std::int32_t>(0xe00002c2));
  EXPECT_TRUE(smc.log.empty());
}

using SmcReadKey = Smc;

TEST_F(SmcReadKey, AsksForTheKeysInfoThenForItsBytes) {
  SMCValue value;
  SMCOpen();
  EXPECT_EQ(SMCReadKey("TC0P", &value), 0);
  EXPECT_EQ(smc.log, (Log{"open", "call 2 on 41", "call 2 on 41"}));
  ASSERT_EQ(smc.requests.size(), 2u);
  EXPECT_EQ(smc.requests[0].key, 0x54433050u);
  EXPECT_EQ(smc.requests[0].command, 9);
  EXPECT_EQ(smc.requests[0].dataSize, 0u);
  EXPECT_EQ(smc.requests[1].key, 0x54433050u);
  EXPECT_EQ(smc.requests[1].command, 5);
  EXPECT_EQ(smc.requests[1].dataSize, 2u);
  EXPECT_EQ(smc.rooms, (std::vector<std::size_t>{80, 80}));
}

TEST_F(SmcReadKey, NothingElseStandsInTheRequests) {
  SMCValue value;
  SMCReadKey("TC0P", &value);
  for (auto request : smc.requests) {
    request.key = request.dataSize = 0;
    request.command = 0;
    EXPECT_TRUE(isZero(request));
  }
}

TEST_F(SmcReadKey, TheAnswerIsUsedAgainAsItIs) {
  SMCValue value;
  SMCReadKey("TC0P", &value);
  EXPECT_TRUE(isZero(smc.given.at(0)));
  EXPECT_EQ(smc.given.at(1).dataSize, 2u);
  EXPECT_EQ(smc.given.at(1).dataType, 0x73703738u);
}

TEST_F(SmcReadKey, GivesSizeTypeAndAllBytes) {
  smc.dataSize = 4;
  smc.dataType = 0x75693820;  // "ui8 "
  for (std::uint8_t byte = 1; byte <= 32; ++byte) smc.bytes.push_back(byte);
  SMCValue value;
  EXPECT_EQ(SMCReadKey("#KEY", &value), 0);
  EXPECT_EQ(value.dataSize, 4u);
  EXPECT_EQ(std::string(value.dataType, 5), std::string("ui8 \0", 5));
  EXPECT_TRUE(std::equal(smc.bytes.begin(), smc.bytes.end(), value.bytes));
  EXPECT_TRUE(isZero(value.key));
}

TEST_F(SmcReadKey, AFailedFirstCallLeavesTheValueEmpty) {
  SMCValue value;
  std::memset(&value, 0x55, sizeof value);
  smc.infoResult = 31;
  EXPECT_EQ(SMCReadKey("TC0P", &value), 31);
  EXPECT_TRUE(isZero(value));
  EXPECT_EQ(smc.requests.size(), 1u);
}

TEST_F(SmcReadKey, AFailedSecondCallLeavesTheBytesEmpty) {
  SMCValue value;
  smc.bytes = {1, 2};
  smc.readResult = 32;
  EXPECT_EQ(SMCReadKey("TC0P", &value), 32);
  EXPECT_EQ(value.dataSize, 2u);
  EXPECT_STREQ(value.dataType, "sp78");
  EXPECT_TRUE(isZero(value.bytes));
}

TEST_F(SmcReadKey, CharactersOfAKeyAreSigned) {
  SMCValue value;
  SMCReadKey("A\xFF\xFF\xFF", &value);
  EXPECT_EQ(smc.requests.at(0).key, 0x40fefeffu);
}

TEST_F(SmcReadKey, AShortKeyIsReadToItsNulAndALongOneToItsFourth) {
  SMCValue value;
  SMCReadKey("T", &value);
  EXPECT_EQ(smc.requests.back().key, 0x54000000u);
  SMCReadKey("TC0P-and-more", &value);
  EXPECT_EQ(smc.requests.back().key, 0x54433050u);
  SMCReadKey(nullptr, &value);
  EXPECT_EQ(smc.requests.back().key, 0u);
}

TEST_F(SmcReadKey, WithoutAValueIsABadArgument) {
  EXPECT_EQ(SMCReadKey("TC0P", nullptr), static_cast<std::int32_t>(0xe00002c2));
}

using SmcTemperature = Smc;

TEST_F(SmcTemperature, IsFixedPointOfSixBits) {
  EXPECT_EQ(reading(0x3a, 0x40), 58.25);
  EXPECT_EQ(reading(0x3a, 0x00), 58);
  EXPECT_EQ(reading(0x00, 0x04), 0.015625);
}

TEST_F(SmcTemperature, ALowByteFrom0x80OnCountsAsNegative) {
  EXPECT_EQ(reading(0x3a, 0x80), 57.5);
  EXPECT_EQ(reading(0x3a, 0xff), 57.984375);
  EXPECT_EQ(reading(0x3a, 0x7f), 58.484375);
}

TEST_F(SmcTemperature, TheLowestTwoBitsAreShiftedOutTowardsMinusInfinity) {
  EXPECT_EQ(reading(0x01, 0x03), 1);
  EXPECT_EQ(reading(0x00, 0xff), -0.015625);
}

TEST_F(SmcTemperature, MayBeBelowZero) {
  EXPECT_EQ(reading(0xff, 0x00), -1);
  EXPECT_EQ(reading(0x80, 0x00), -128);
}

TEST_F(SmcTemperature, OfAnotherTypeIs0) {
  smc.dataType = 0x73703739;  // "sp79"
  EXPECT_EQ(reading(0x3a, 0x40), 0.0);
  smc.dataType = 0x73703700;  // "sp7"
  EXPECT_EQ(reading(0x3a, 0x40), 0.0);
  smc.dataType = 0x53503738;  // "SP78"
  EXPECT_EQ(reading(0x3a, 0x40), 0.0);
}

TEST_F(SmcTemperature, OfSize0Is0) {
  smc.dataSize = 0;
  EXPECT_EQ(reading(0x3a, 0x40), 0.0);
}

TEST_F(SmcTemperature, ThatCantBeReadIs0) {
  smc.infoResult = 1;
  EXPECT_EQ(reading(0x3a, 0x40), 0.0);
  smc.infoResult = 0;
  smc.readResult = 1;
  EXPECT_EQ(reading(0x3a, 0x40), 0.0);
}

}  // namespace
}  // namespace vantile
