#include "vantile/platform/browsers.h"

#include "seam.h"
#include "temporary_folder.h"

namespace vantile {
namespace {

class BrowsersSeam : public Seam {
 protected:
  void write(const fakes::PropertyList::Dictionary& entries) {
    folder.write("browser.plist", "the browser's list");
    fakes::machine.lists["the browser's list"] = {entries};
  }
  std::optional<DownloadSetting> setting() {
    return browsers->setting({folder / "browser.plist", "DownloadsPath"});
  }

  TemporaryFolder folder;
  const std::shared_ptr<Browsers> browsers = systemBrowsers();
};

TEST_F(BrowsersSeam, TellTheFolderInTheList) {
  write({{u"DownloadsPath", {u"~/Downloads"}}});
  ASSERT_TRUE(setting());
  EXPECT_EQ(setting()->folder, "~/Downloads");
}

TEST_F(BrowsersSeam, TellNothingWithoutAList) {
  EXPECT_FALSE(setting());
}

TEST_F(BrowsersSeam, TellNoFolderOfAListWithout) {
  write({{u"Other", {u"text"}}});
  ASSERT_TRUE(setting());
  EXPECT_FALSE(setting()->folder);
}

TEST_F(BrowsersSeam, TellNoFolderOfAValueThatIsNoText) {
  write({{u"DownloadsPath", {std::int64_t{5}}}});
  ASSERT_TRUE(setting());
  EXPECT_FALSE(setting()->folder);
}

TEST_F(BrowsersSeam, TellNoFolderOfAMalformedList) {
  folder.write("browser.plist", "malformed");
  ASSERT_TRUE(setting());
  EXPECT_FALSE(setting()->folder);
}

TEST_F(BrowsersSeam, ReadTheListEachTime) {
  write({{u"DownloadsPath", {u"/first"}}});
  EXPECT_EQ(setting()->folder, "/first");
  write({{u"DownloadsPath", {u"/second"}}});
  EXPECT_EQ(setting()->folder, "/second");
}

TEST_F(BrowsersSeam, StandAsTheSystemHasThem) {
  EXPECT_TRUE(browsers->preferenceFolders().empty());
  EXPECT_TRUE(browsers->hasSafariFolder());
  EXPECT_FALSE(browsers->renamesUnfinished());
}

TEST_F(BrowsersSeam, AreSharedByTheProcess) {
  EXPECT_EQ(systemBrowsers(), browsers);
}

}  // namespace
}  // namespace vantile
