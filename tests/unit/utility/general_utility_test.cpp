#include "vantile/utility/general_utility.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "fakes/fake_utility_ports.h"

namespace vantile {
namespace {

using testing::FakeUtilityPorts;

struct GeneralUtilityTest : ::testing::Test {
  GeneralUtilityTest() {
    FileAttributes file;
    file.facts = {FileKind::regular, 1ull << 40, 3, {7, 1ull << 50}};
    file.permissions = 0644;
    file.owner = 501;
    file.group = 20;
    file.modified = moment(1234567890123456789);
    ports.files->files["/f"] = file;
  }

  static std::chrono::sys_time<std::chrono::nanoseconds> moment(std::int64_t sinceEpoch) {
    return std::chrono::sys_time<std::chrono::nanoseconds>(std::chrono::nanoseconds(sinceEpoch));
  }
  static const Date* date(const Dictionary& attributes, Key key) {
    const Value* const value = attributes.find(key);
    const auto* const held = value ? value->as<std::shared_ptr<const Date>>() : nullptr;
    return held ? held->get() : nullptr;
  }

  FakeUtilityPorts ports;
};

TEST_F(GeneralUtilityTest, OsVersionIsWhatTheSystemTells) {
  ports.version->told = "10.11.6";
  EXPECT_EQ(GeneralUtility::osVersion(), "10.11.6");
}

TEST_F(GeneralUtilityTest, OsVersionIsNilWhenTheSystemDoesNotTell) {
  ports.version->told = std::nullopt;
  EXPECT_EQ(GeneralUtility::osVersion(), std::nullopt);
}

TEST_F(GeneralUtilityTest, TigerBeginsAt10Point4) {
  for (const auto& [version, later] :
       {std::pair("10.3.9", false), {"10.4", true}, {"10.10", true}, {"11.0", true}}) {
    ports.version->told = version;
    EXPECT_EQ(GeneralUtility::OSIsTigerOrLater(), later) << version;
  }
}

TEST_F(GeneralUtilityTest, MavericksBeginsAt10Point9) {
  for (const auto& [version, later] :
       {std::pair("10.8.5", false), {"10.9", true}, {"10.10", true}, {"26.1", true}}) {
    ports.version->told = version;
    EXPECT_EQ(GeneralUtility::OSIsMavericksOrLater(), later) << version;
  }
}

TEST_F(GeneralUtilityTest, AnUnknownVersionIsNoneOrLater) {
  ports.version->told = std::nullopt;
  EXPECT_FALSE(GeneralUtility::OSIsTigerOrLater());
  EXPECT_FALSE(GeneralUtility::OSIsMavericksOrLater());
}

TEST_F(GeneralUtilityTest, UserHomePathIsTheHome) {
  EXPECT_EQ(GeneralUtility::userHomePath(), "/users/ada");
}

TEST_F(GeneralUtilityTest, UserDownlodsPathIsTheDownloadsFolder) {
  EXPECT_EQ(GeneralUtility::userDownlodsPath(), "/users/ada/Down");
}

TEST_F(GeneralUtilityTest, UserLibraryIsTheLibraryFolder) {
  EXPECT_EQ(GeneralUtility::userLibrary(), "/users/ada/Lib");
}

TEST_F(GeneralUtilityTest, UserPreferencesPathIsThePreferencesFolder) {
  EXPECT_EQ(GeneralUtility::userPreferencesPath(), "/users/ada/Prefs");
}

TEST_F(GeneralUtilityTest, ApplicationPathIsTheMachinesApplicationsFolder) {
  EXPECT_EQ(GeneralUtility::applicationPath(), "/apps");
}

TEST_F(GeneralUtilityTest, UserTrashPathIsTheTrash) {
  EXPECT_EQ(GeneralUtility::userTrashPath(), "/users/ada/Bin");
}

TEST_F(GeneralUtilityTest, CommonAttributesOfAFileThatCantBeReadAreNil) {
  EXPECT_EQ(GeneralUtility::commonAttributesOfFile("/none"), nullptr);
  EXPECT_EQ(GeneralUtility::commonAttributesOfFile(""), nullptr);
}

TEST_F(GeneralUtilityTest, CommonAttributesHoldTheModificationDate) {
  const auto attributes = GeneralUtility::commonAttributesOfFile("/f");
  ASSERT_TRUE(attributes);
  const Date* const modified = date(*attributes, "NSFileModificationDate");
  ASSERT_TRUE(modified);
  EXPECT_EQ(modified->time, moment(1234567890123456789));
}

TEST_F(GeneralUtilityTest, CommonAttributesKeepTheWidthsOfTheirNumbers) {
  const auto attributes = GeneralUtility::commonAttributesOfFile("/f");
  const auto wide = [&](Key key) { return *attributes->find(key)->as<std::uint64_t>(); };
  const auto narrow = [&](Key key) { return *attributes->find(key)->as<std::uint32_t>(); };
  EXPECT_EQ(wide("NSFileSize"), 1ull << 40);
  EXPECT_EQ(wide("NSFileReferenceCount"), 3u);
  EXPECT_EQ(wide("NSFileSystemNumber"), 7u);
  EXPECT_EQ(wide("NSFileSystemFileNumber"), 1ull << 50);
  EXPECT_EQ(narrow("NSFilePosixPermissions"), 0644u);
  EXPECT_EQ(narrow("NSFileOwnerAccountID"), 501u);
  EXPECT_EQ(narrow("NSFileGroupOwnerAccountID"), 20u);
}

TEST_F(GeneralUtilityTest, CommonAttributesNameTheKindOfFile) {
  for (const auto& [kind, name] : {std::pair(FileKind::regular, "NSFileTypeRegular"),
                                   {FileKind::folder, "NSFileTypeDirectory"},
                                   {FileKind::symbolicLink, "NSFileTypeSymbolicLink"},
                                   {FileKind::other, "NSFileTypeUnknown"}}) {
    ports.files->files["/f"].facts.kind = kind;
    const auto attributes = GeneralUtility::commonAttributesOfFile("/f");
    ASSERT_TRUE(attributes->text("NSFileType"));
    EXPECT_EQ(*attributes->text("NSFileType"), name);
  }
}

TEST_F(GeneralUtilityTest, ACreationDateIsThereWhereTheSystemKeepsOne) {
  EXPECT_FALSE(GeneralUtility::commonAttributesOfFile("/f")->contains("NSFileCreationDate"));
  ports.files->files["/f"].created = moment(-5);
  const auto attributes = GeneralUtility::commonAttributesOfFile("/f");
  ASSERT_TRUE(date(*attributes, "NSFileCreationDate"));
  EXPECT_EQ(date(*attributes, "NSFileCreationDate")->time, moment(-5));
}

TEST_F(GeneralUtilityTest, CommonAttributesAreOfALinkItself) {
  (void)GeneralUtility::commonAttributesOfFile("/f");
  ASSERT_EQ(ports.files->log.size(), 1u);
  EXPECT_EQ(ports.files->log[0], std::pair(std::string("/f"), false));
}

TEST(ConvertStringToCstring, GivesTheBytesUnchanged) {
  EXPECT_STREQ(GeneralUtility::convertStringToCstring("/a/\xC3\xA9"), "/a/\xC3\xA9");
  EXPECT_STREQ(GeneralUtility::convertStringToCstring("\xFF\xFE \n"), "\xFF\xFE \n");
  EXPECT_STREQ(GeneralUtility::convertStringToCstring(""), "");
}

TEST(ConvertStringToCstring, OfNilIsNull) {
  EXPECT_EQ(GeneralUtility::convertStringToCstring(std::nullopt), nullptr);
}

TEST(ConvertStringToCstring, StaysValidOverEightFurtherCalls) {
  for (const auto& text : {std::string("short"), std::string(300, 'x')}) {
    const char* const first = GeneralUtility::convertStringToCstring(text);
    for (int call = 0; call < 8; ++call)
      (void)GeneralUtility::convertStringToCstring(std::string(200, 'y'));
    EXPECT_EQ(first, text);
  }
}

TEST(ConvertStringToCstring, StaysValidOverFifteenFurtherCalls) {
  std::vector<const char*> all;
  for (int call = 0; call < 16; ++call)
    all.push_back(GeneralUtility::convertStringToCstring("call " + std::to_string(call)));
  for (int call = 0; call < 16; ++call)
    EXPECT_EQ(all[static_cast<std::size_t>(call)], "call " + std::to_string(call));
}

TEST(ConvertStringToCstring, IsKeptForEachThread) {
  const char* const mine = GeneralUtility::convertStringToCstring("mine");
  std::thread([] {
    for (int call = 0; call < 100; ++call)
      (void)GeneralUtility::convertStringToCstring("another thread's");
  }).join();
  EXPECT_STREQ(mine, "mine");
}

}  // namespace
}  // namespace vantile
