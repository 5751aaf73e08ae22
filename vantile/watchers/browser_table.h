#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace vantile {

/// The code of a browser: four characters.
constexpr std::uint32_t browserCode(const char (&characters)[5]) {
  std::uint32_t code = 0;
  for (int place = 0; place < 4; ++place)
    code = code << 8 | static_cast<unsigned char>(characters[place]);
  return code;
}

constexpr std::uint32_t safariCode = browserCode("sabw");
constexpr std::uint32_t unknownBrowserCode = browserCode("unbw");

/// A browser whose downloads are watched.
struct BrowserEntry {
  std::string_view key;            ///< in the table of download folders
  std::string_view preferences;    ///< its property list in the preferences folder
  std::string_view preferenceKey;  ///< of the download folder, in that list
  std::string_view extension;      ///< of its unfinished downloads
  std::uint32_t code;
};

/// In the order in which their preferences are read.
constexpr std::array<BrowserEntry, 4> browserTable = {{
    {"Safari", "com.apple.Safari.plist", "DownloadsPath", "download", safariCode},
    {"Chrome", "com.google.Chrome.plist", "NSNavLastRootDirectory", "crdownload",
     browserCode("chbw")},
    {"Firefox", "org.mozilla.firefox.plist", "NSNavLastRootDirectory", "part", browserCode("fibw")},
    {"Opera", "com.operasoftware.Opera.plist", "NSNavLastRootDirectory", "opdownload",
     browserCode("opbw")},
}};

/// The code of the browser whose unfinished downloads have that extension.
constexpr std::uint32_t codeOfExtension(std::string_view extension) {
  for (const auto& browser : browserTable)
    if (browser.extension == extension) return browser.code;
  return unknownBrowserCode;
}

}  // namespace vantile
