#include "vantile/platform/system_entries.h"

#include "seam.h"

namespace vantile {
namespace {

using namespace std::string_literals;
using fakes::PropertyList;

using SystemEntriesSeam = Seam;

using Calls = std::vector<std::string>;

auto registryText(std::string_view key) {
  return systemEntries()->registryText(key);
}

TEST_F(SystemEntriesSeam, ARegistryTextIsAPropertyOfTheExpertDevice) {
  fakes::machine.registry["IOPlatformSerialNumber"] = PropertyList{u"C02ABC\u00DC"};
  EXPECT_EQ(registryText("IOPlatformSerialNumber"), "C02ABC\u00DC");
  EXPECT_EQ(fakes::machine.calls, (Calls{"match", "property", "release service"}));
}

TEST_F(SystemEntriesSeam, APropertyThatIsMissingIsNothing) {
  EXPECT_EQ(registryText("IOPlatformUUID"), std::nullopt);
  EXPECT_EQ(fakes::machine.calls, (Calls{"match", "property", "release service"}));
}

TEST_F(SystemEntriesSeam, APropertyThatIsNoTextIsNothing) {
  fakes::machine.registry["number"] = PropertyList{std::int64_t{1}};
  fakes::machine.registry["data"] = PropertyList{PropertyList::Data()};
  EXPECT_EQ(registryText("number"), std::nullopt);
  EXPECT_EQ(registryText("data"), std::nullopt);
}

TEST_F(SystemEntriesSeam, WithoutAnExpertDeviceThereIsNoProperty) {
  fakes::machine.registry["IOPlatformUUID"] = PropertyList{u"564D"};
  fakes::machine.hasExpertDevice = false;
  EXPECT_EQ(registryText("IOPlatformUUID"), std::nullopt);
  EXPECT_EQ(fakes::machine.calls, Calls{"match"});
}

TEST_F(SystemEntriesSeam, WhereAnObjectCantBeMadeThereIsNoProperty) {
  fakes::machine.registry["IOPlatformUUID"] = PropertyList{u"564D"};
  for (const char* const function : {"CFStringCreateWithBytes", "IOServiceMatching"}) {
    fakes::machine.refuses = {function};
    EXPECT_EQ(registryText("IOPlatformUUID"), std::nullopt) << function;
  }
  fakes::machine.refuses.clear();
  EXPECT_EQ(registryText("IOPlatformUUID"), "564D");
  EXPECT_EQ(registryText("\xFF"), std::nullopt);
}

TEST_F(SystemEntriesSeam, AControlTextIsAllItsBytes) {
  fakes::machine.sysctlValues["hw.model"] = "MacBookPro11,1\0"s;
  EXPECT_EQ(systemEntries()->controlText("hw.model"), "MacBookPro11,1\0"s);
  fakes::machine.sysctlValues["hw.model"] = std::string(100000, 'x');
  EXPECT_EQ(systemEntries()->controlText("hw.model"), std::string(100000, 'x'));
  fakes::machine.sysctlValues["hw.model"] = "";
  EXPECT_EQ(systemEntries()->controlText("hw.model"), "");
}

TEST_F(SystemEntriesSeam, AControlTextThatIsMissingIsNothing) {
  EXPECT_EQ(systemEntries()->controlText("hw.model"), std::nullopt);
}

TEST_F(SystemEntriesSeam, AControlTextThatGrewMeanwhileIsWhatWasRead) {
  fakes::machine.sysctlValues["hw.model"] = "Mac\0"s;
  fakes::machine.sysctlLater["hw.model"] = "MacBookPro\0"s;
  EXPECT_EQ(systemEntries()->controlText("hw.model"), "\0\0\0\0"s);
}

TEST_F(SystemEntriesSeam, AControlTextThatShrankMeanwhileIsFollowedByZeros) {
  fakes::machine.sysctlValues["hw.model"] = "MacBook\0"s;
  fakes::machine.sysctlLater["hw.model"] = "Mac\0"s;
  EXPECT_EQ(systemEntries()->controlText("hw.model"), "Mac\0\0\0\0\0"s);
}

TEST_F(SystemEntriesSeam, AControlNumberIsEightBytesWide) {
  fakes::machine.sysctlValues["hw.cpufrequency"] = "\x01\x02\x03\x04\x05\x06\x07\x08";
  EXPECT_EQ(systemEntries()->controlNumber("hw.cpufrequency"), 0x0807060504030201u);
}

TEST_F(SystemEntriesSeam, AControlNumberOfFourBytesFillsTheLowerHalf) {
  fakes::machine.sysctlValues["hw.physicalcpu"] = "\xFF\xFF\xFF\xFF";
  EXPECT_EQ(systemEntries()->controlNumber("hw.physicalcpu"), 0xFFFFFFFFu);
}

TEST_F(SystemEntriesSeam, AControlNumberThatIsMissingOrTooWideIsNothing) {
  fakes::machine.sysctlValues["wide"] = std::string(9, '\1');
  EXPECT_EQ(systemEntries()->controlNumber("hw.cpufrequency"), std::nullopt);
  EXPECT_EQ(systemEntries()->controlNumber("wide"), std::nullopt);
}

}  // namespace
}  // namespace vantile
