#include "vantile/platform/browsers.h"

#include <sys/stat.h>

#include "vantile/platform/property_lists.h"

namespace vantile {
namespace {

class MacosBrowsers final : public Browsers {
 public:
  std::optional<DownloadSetting> setting(const BrowserPreference& preference) override {
    struct stat status = {};
    if (::stat(preference.path.c_str(), &status) != 0) return std::nullopt;
    DownloadSetting setting;
    const auto list = systemPropertyLists()->read(preference.path);
    if (const auto* const folder = list ? list->text(preference.key) : nullptr)
      setting.folder = *folder;
    return setting;
  }

  std::vector<std::string> preferenceFolders() override { return {}; }
  bool hasSafariFolder() override { return true; }
  bool renamesUnfinished() override { return false; }
};

}  // namespace

std::shared_ptr<Browsers> systemBrowsers() {
  static auto& browsers = *new std::shared_ptr<Browsers>(std::make_shared<MacosBrowsers>());
  return browsers;
}

}  // namespace vantile
