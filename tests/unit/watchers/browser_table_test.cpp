#include "vantile/watchers/browser_table.h"

#include <gtest/gtest.h>

#include <string_view>
#include <tuple>
#include <vector>

namespace vantile {
namespace {

TEST(BrowserTable, NamesFourBrowsersInTheOrderOfReading) {
  using Row = std::tuple<std::string_view, std::string_view, std::string_view, std::string_view,
                         std::uint32_t>;
  const std::vector<Row> expected = {
      {"Safari", "com.apple.Safari.plist", "DownloadsPath", "download", 0x73616277},
      {"Chrome", "com.google.Chrome.plist", "NSNavLastRootDirectory", "crdownload", 0x63686277},
      {"Firefox", "org.mozilla.firefox.plist", "NSNavLastRootDirectory", "part", 0x66696277},
      {"Opera", "com.operasoftware.Opera.plist", "NSNavLastRootDirectory", "opdownload",
       0x6F706277}};
  std::vector<Row> rows;
  for (const auto& browser : browserTable)
    rows.emplace_back(browser.key, browser.preferences, browser.preferenceKey, browser.extension,
                      browser.code);
  EXPECT_EQ(rows, expected);
}

TEST(BrowserTable, TellsABrowserByTheExtensionOfItsUnfinishedDownloads) {
  EXPECT_EQ(codeOfExtension("download"), 0x73616277u);
  EXPECT_EQ(codeOfExtension("part"), 0x66696277u);
  EXPECT_EQ(codeOfExtension("crdownload"), 0x63686277u);
  EXPECT_EQ(codeOfExtension("opdownload"), 0x6F706277u);
}

TEST(BrowserTable, AnyOtherExtensionIsOfAnUnknownBrowser) {
  for (const auto* extension : {"", "Part", "crdownloads", "zip", "wnload"})
    EXPECT_EQ(codeOfExtension(extension), 0x756E6277u) << extension;
}

}  // namespace
}  // namespace vantile
