#include "dashboard/events_pane.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantile::host {
namespace {

using Rows = std::vector<std::string>;

constexpr std::time_t noon = 12 * 60 * 60;

/// The operations that come with a path.
Report ofPath(std::string_view operation, const std::optional<std::string>& path) {
  return {"a watcher", operation, {argument(path)}};
}

Report ofTrashSize(std::uint64_t bytes) {
  return {"trash", "trashUsedSizeChanged", {bytes}};
}

class HostEventsPane : public testing::Test {
 protected:
  HostEventsPane() {
    setenv("TZ", "UTC", 1);
    tzset();
  }

  void take(const Report& report, std::time_t at = noon) { events->take(report, at); }

  Rows drawn(Size size) const {
    Canvas canvas(size);
    pane.draw(canvas.region(), 1);
    auto rows = canvas.rows();
    for (auto& row : rows) row.erase(row.find_last_not_of(' ') + 1);
    return rows;
  }
  std::string firstRow(int width = 76) const { return drawn({width, 1}).front(); }

  std::shared_ptr<Events> events = std::make_shared<Events>();
  EventsPane pane{events};
};

TEST_F(HostEventsPane, SaysWhatIsWatchedAsLongAsNothingHappened) {
  EXPECT_EQ(drawn({60, 2}),
            (Rows{"nothing yet", "watching downloads, applications and the Trash"}));
  EXPECT_EQ(firstRow(), "nothing yet, watching downloads, applications and the Trash");
}

TEST_F(HostEventsPane, TellsEachOperationInPlainWords) {
  take(ofPath("downloadFileCompleted", "/home/a/film.mp4"));
  EXPECT_EQ(firstRow(), "12:00:00  downloaded                film.mp4  /home/a");
  take(ofPath("appAdded", "/usr/share/applications/vim.desktop"));
  EXPECT_EQ(firstRow(), "12:00:00  application added         vim.desktop  /usr/share/applications");
  take(ofPath("movedToTrash", "/trash/vim.desktop"));
  EXPECT_EQ(firstRow(), "12:00:00  moved to the Trash        vim.desktop  /trash");
  take(ofPath("trashAddedApp", "/trash/a/vim.desktop"));
  EXPECT_EQ(firstRow(), "12:00:00  application in the Trash  vim.desktop  /trash/a");
}

TEST_F(HostEventsPane, TheNewestIsAtTheTopWithItsTime) {
  take(ofPath("downloadFileCompleted", "/a/old"), noon);
  take(ofPath("downloadFileCompleted", "/a/new"), noon + 61);
  EXPECT_EQ(drawn({60, 3}), (Rows{"12:01:01  downloaded                new  /a",
                                  "12:00:00  downloaded                old  /a", ""}));
}

TEST_F(HostEventsPane, TheFolderIsDimmedAndTheNameIsNot) {
  take(ofPath("downloadFileCompleted", "/a/b"));
  Canvas canvas({60, 1});
  pane.draw(canvas.region(), 1);
  EXPECT_EQ(canvas.at(36, 0), (Cell{U'b', {}}));
  EXPECT_EQ(canvas.at(39, 0), (Cell{U'/', {Colour::Grey}}));
}

TEST_F(HostEventsPane, ADownloadWhoseFileWasNotFoundSaysSo) {
  take(ofPath("downloadFileCompleted", std::nullopt));
  EXPECT_EQ(firstRow(), "12:00:00  downloaded                its file was not found");
}

TEST_F(HostEventsPane, TheTrashsFirstSizeIsNoEvent) {
  take(ofTrashSize(2048));
  EXPECT_EQ(drawn({60, 2}).front(), "nothing yet");
  EXPECT_EQ(pane.note(), "2.00 KiB in the Trash");
}

TEST_F(HostEventsPane, ASizeOfTheTrashReplacesTheOneBefore) {
  take(ofTrashSize(0));
  take(ofTrashSize(1024), noon);
  take(ofPath("downloadFileCompleted", "/a/b"), noon + 1);
  take(ofTrashSize(3072), noon + 2);
  EXPECT_EQ(drawn({60, 3}), (Rows{"12:00:02  Trash holds 3.00 KiB",
                                  "12:00:01  downloaded                b  /a", ""}));
}

TEST_F(HostEventsPane, ASingleRowLeavesTheSizeToTheNote) {
  take(ofTrashSize(0));
  take(ofTrashSize(1024));
  EXPECT_EQ(firstRow(), "12:00:00  Trash holds 1.00 KiB");
  take(ofPath("trashAddedApp", "/a/b.desktop"));
  take(ofTrashSize(2048));
  EXPECT_EQ(firstRow(), "12:00:00  application in the Trash  b.desktop  /a");
}

TEST_F(HostEventsPane, TextIsClippedByTheCellsItTakes) {
  take(ofPath("downloadFileCompleted", "/folder/日本語の長い名前だ"));
  EXPECT_EQ(firstRow(36 + 16), "12:00:00  downloaded                日本語の長い名…");
  EXPECT_EQ(firstRow(36 + 26), "12:00:00  downloaded                日本語の長い名前だ  /fold…");
}

TEST_F(HostEventsPane, ANarrowOneGivesTheNameTheRoom) {
  take(ofPath("downloadFileCompleted", "/a/film.mp4"));
  EXPECT_EQ(firstRow(36), "12:00:00  downloaded  film.mp4  /a");
  EXPECT_EQ(firstRow(24), "12:00:00  downloaded  f…");
}

TEST_F(HostEventsPane, WhatWouldHarmATerminalIsReplaced) {
  take(ofPath("downloadFileCompleted", "/\x1b[2J/caf\xff\n.mp4"));
  EXPECT_EQ(firstRow(), "12:00:00  downloaded                caf\uFFFD\uFFFD.mp4  /\uFFFD[2J");
}

TEST_F(HostEventsPane, AnyPathCanBeShown) {
  for (const char* path : {"", "/", "//", "name", "/name", "/folder/name.app/", "\xff"}) {
    take(ofPath("appAdded", path));
  }
  for (int width = 0; width < 60; ++width) drawn({width, 9});
  EXPECT_EQ(
      drawn({76, 7}),
      (Rows{"12:00:00  application added         \uFFFD",
            "12:00:00  application added         name.app  /folder",
            "12:00:00  application added         name  /",
            "12:00:00  application added         name", "12:00:00  application added         //",
            "12:00:00  application added         /", "12:00:00  application added"}));
}

TEST_F(HostEventsPane, KeepsTheLatestOnly) {
  for (int at = 0; at < 1000; ++at) take(ofPath("appAdded", "/" + std::to_string(at)));
  EXPECT_EQ(events->latest().size(), 200u);
  EXPECT_EQ(events->latest().front().name, "999");
}

TEST_F(HostEventsPane, AReportThatItDoesNotKnowIsNotItsOwn) {
  take(ofPath("clearMemoryCompleted", "/a"));
  take({"trash", "trashUsedSizeChanged", {}});
  EXPECT_TRUE(events->latest().empty());
  EXPECT_EQ(pane.note(), "");
}

}  // namespace
}  // namespace vantile::host
