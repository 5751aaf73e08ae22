#include "dashboard/screen.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace vantile::host {
namespace {

class NamedPane final : public Pane {
 public:
  NamedPane(std::string name, PaneRows rows, bool sorts = false)
      : name_(std::move(name)), rows_(rows), sorts_(sorts) {}
  std::string title() const override { return name_; }
  std::string note() const override { return "a note"; }
  PaneRows rows() const override { return rows_; }
  bool sorts() const override { return sorts_; }
  void draw(Region region, std::int32_t) const override { region.text(0, 0, "inside " + name_); }

 private:
  std::string name_;
  PaneRows rows_;
  bool sorts_;
};

class HostScreen : public testing::Test {
 protected:
  HostScreen() {
    panes.push_back(std::make_unique<NamedPane>("One", PaneRows{6, 6, false}));
    panes.push_back(std::make_unique<NamedPane>("Two", PaneRows{6, 6, true}));
  }

  std::vector<std::string> drawn(Size size, std::size_t page = 0) {
    Canvas canvas(size);
    around.page = page;
    pages = drawScreen(canvas, panes, around);
    return canvas.rows();
  }

  std::vector<std::unique_ptr<Pane>> panes;
  Surroundings around{.machine = "box", .clock = "12:34:56", .message = {}};
  std::size_t pages = 0;
};

TEST_F(HostScreen, HasAHeadFramesAndAFoot) {
  const auto rows = drawn({42, 24});
  EXPECT_EQ(rows[0], " vantile-host on box  every 1 s  12:34:56 ");
  EXPECT_EQ(rows[1], "╭─ One ───────────────────────── a note ─╮");
  EXPECT_EQ(rows[2], "│ inside One                             │");
  EXPECT_EQ(rows[23].substr(0, 7), " q quit");
  EXPECT_EQ(pages, 1u);
}

TEST_F(HostScreen, ANarrowOneHasTheTimeAlone) {
  EXPECT_EQ(drawn({41, 24})[0], " vantile-host                   12:34:56 ");
}

TEST_F(HostScreen, AMachineWithoutANameGoesUnmentioned) {
  around.machine.clear();
  EXPECT_EQ(drawn({42, 24})[0], " vantile-host         every 1 s  12:34:56 ");
}

TEST_F(HostScreen, ALowOneHasTitleLinesInsteadOfFrames) {
  const auto rows = drawn({40, 12});
  EXPECT_EQ(rows[1], "── One ─────────────────────── a note ──");
  EXPECT_EQ(rows[2].substr(0, 11), " inside One");
}

TEST_F(HostScreen, OffersTheOtherPages) {
  EXPECT_NE(drawn({40, 12}, 1)[1].find("Two"), std::string::npos);
  EXPECT_EQ(pages, 2u);
  EXPECT_NE(drawn({40, 12}, 1)[11].find("page 2 of 2"), std::string::npos);
}

TEST_F(HostScreen, APageThatIsNotThereIsTheLastOne) {
  EXPECT_EQ(drawn({40, 12}, 9), drawn({40, 12}, 1));
}

TEST_F(HostScreen, ShowsTheLatestMessage) {
  around.message = "something went wrong";
  EXPECT_NE(drawn({60, 24})[23].find("something went wrong"), std::string::npos);
}

TEST_F(HostScreen, AKeyThatHasNoRoomIsLeftOut) {
  panes.push_back(std::make_unique<NamedPane>("Three", PaneRows{6, 6, false}, true));
  EXPECT_EQ(drawn({46, 12}, 2)[11], " q quit   Tab page 3 of 3   s sort   r reverse");
  EXPECT_EQ(drawn({45, 12}, 2)[11], " q quit   Tab page 3 of 3   s sort           ");
}

TEST_F(HostScreen, AMessageThatIsTooLongShowsThatItGoesOn) {
  around.message = "something went wrong";
  EXPECT_EQ(drawn({28, 24})[23], " q quit   something went wr…");
}

TEST_F(HostScreen, ATooSmallOneSaysSo) {
  const auto rows = drawn({20, 5});
  EXPECT_NE(rows[2].find("too small"), std::string::npos);
  EXPECT_NE(rows[3].find("needs 28×7"), std::string::npos);
}

TEST_F(HostScreen, AnySizeCanBeDrawn) {
  for (int width = 0; width < 130; width += 3) {
    for (int height = 0; height < 50; ++height) drawn({width, height});
  }
}

}  // namespace
}  // namespace vantile::host
