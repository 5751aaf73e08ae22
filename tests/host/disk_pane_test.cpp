#include "dashboard/disk_pane.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "drawn.h"

namespace vantile::host {
namespace {

class HostDiskPane : public testing::Test {
 protected:
  std::shared_ptr<Dictionary> volume(std::string name, std::uint64_t total, std::uint64_t used) {
    auto made = std::make_shared<Dictionary>();
    made->set("disk_name", std::move(name));
    made->set("disk_totalsize", total);
    made->set("disk_usedsize", used);
    made->set("has_accumulated_sizes", false);
    volumes->push_back(made);
    return made;
  }
  void split(Dictionary& of, std::uint64_t movies, std::uint64_t apps, std::uint64_t audio,
             std::uint64_t photos) {
    of.set("disk_movies", movies);
    of.set("disk_apps", apps);
    of.set("disk_audio", audio);
    of.set("disk_photos", photos);
    of.set("has_accumulated_sizes", true);
  }
  void take() { figures->take({"disk", "diskDetails", {Value(volumes)}}); }

  /// The colours of the bar's cells, in a pane of one volume with a bar of ten cells.
  std::vector<Colour> bar() {
    take();
    Canvas canvas({50, 1});
    DiskPane(figures).draw(canvas.region(), 1);
    std::vector<Colour> colours;
    for (int x = 18; x < 28; ++x) {
      const auto& cell = canvas.at(x, 0);
      colours.push_back(cell.glyph == U' ' ? cell.style.paper : cell.style.ink);
    }
    return colours;
  }

  std::shared_ptr<Array> volumes = std::make_shared<Array>();
  std::shared_ptr<DiskFigures> figures = std::make_shared<DiskFigures>();
};

TEST_F(HostDiskPane, SaysThatItWaitsBeforeTheFirstSample) {
  EXPECT_TRUE(contains(drawn(DiskPane(figures), {60, 4}), "waiting"));
  EXPECT_EQ(DiskPane(figures).note(), "");
}

TEST_F(HostDiskPane, SaysWhereThereIsNoVolume) {
  take();
  EXPECT_TRUE(contains(drawn(DiskPane(figures), {60, 4}), "no volume is mounted"));
}

TEST_F(HostDiskPane, ShowsALineAVolumeUnderALegend) {
  volume("System", 100ull << 30, 50ull << 30);
  volume("M\xC3\xBCll", 8ull << 20, 8ull << 20);
  take();
  const auto rows = drawn(DiskPane(figures), {60, 3});
  EXPECT_TRUE(rows[0].starts_with("■ used  ■ free   "));
  EXPECT_EQ(rows[1], "System            ██████████             50.0 GiB of 100 GiB");
  EXPECT_EQ(rows[2], "Müll              ████████████████████  8.00 MiB of 8.00 MiB");
  EXPECT_EQ(DiskPane(figures).note(), "2 mounted, contents not counted yet");
}

TEST_F(HostDiskPane, TheLegendHasTheColoursThatTheBarsHave) {
  split(*volume("System", 100, 80), 10, 20, 10, 10);
  take();
  const std::string of = "■ movies  ■ apps  ■ audio  ■ photos  ■ other  ";
  EXPECT_TRUE(drawn(DiskPane(figures), {52, 2})[0].starts_with(of + "■ free"));
  EXPECT_EQ(DiskPane(figures).note(), "1 mounted");
  volume("Stick", 100, 50);
  take();
  EXPECT_TRUE(drawn(DiskPane(figures), {60, 3})[0].starts_with(of + "■ used  ■ free"));
  EXPECT_EQ(drawn(DiskPane(figures), {52, 3})[0], of + "■ used");
  EXPECT_EQ(DiskPane(figures).note(), "2 mounted, contents of 1 not counted yet");
}

TEST_F(HostDiskPane, VolumesOfOneNameAreToldApartByTheirMountPoints) {
  volume("Data", 100, 50)->set("disk_path", "/media/ada/Data");
  volume("Data", 100, 50)->set("disk_path", "/media/ada/日本/Data1");
  volume("System", 100, 50)->set("disk_path", "/");
  take();
  const auto narrow = drawn(DiskPane(figures), {52, 3});
  EXPECT_TRUE(narrow[0].starts_with("Data …ia/ada/Data ███"));
  EXPECT_TRUE(narrow[1].starts_with("Data …/日本/Data1 ███"));
  EXPECT_TRUE(narrow[2].starts_with("System            ███"));
  const auto wide = drawn(DiskPane(figures), {90, 3});
  EXPECT_TRUE(wide[0].starts_with("Data /media/ada/Data        ███"));
  EXPECT_TRUE(wide[1].starts_with("Data /media/ada/日本/Data1  ███"));
}

TEST_F(HostDiskPane, AnySizeCanBeDrawn) {
  volume("日本", 100, 50)->set("disk_path", "/mnt/日本");
  volume("日本", 100, 50)->set("disk_path", "/a");
  split(*volume("", 100, 80), 10, 20, 10, 10);
  take();
  for (int width = 0; width < 70; ++width)
    for (int height = 0; height < 6; ++height)
      EXPECT_NO_FATAL_FAILURE(drawn(DiskPane(figures), {width, height}));
}

TEST_F(HostDiskPane, SaysHowManyHaveNoRoom) {
  for (int i = 0; i < 12; ++i) volume("Volume " + std::to_string(i), 100, 50);
  take();
  const auto rows = drawn(DiskPane(figures), {60, 11});
  EXPECT_TRUE(rows[0].starts_with("■ used"));
  EXPECT_TRUE(rows[9].starts_with("Volume 8 "));
  EXPECT_TRUE(rows[10].starts_with("and 3 more "));
  const auto few = drawn(DiskPane(figures), {60, 3});
  EXPECT_TRUE(few[0].starts_with("Volume 0 "));
  EXPECT_TRUE(few[2].starts_with("and 10 more "));
  EXPECT_TRUE(drawn(DiskPane(figures), {60, 1})[0].starts_with("Volume 0 "));
}

TEST_F(HostDiskPane, GoesWithoutALegendWhereThereIsNoRowForIt) {
  volume("System", 100, 50);
  volume("Stick", 100, 50);
  take();
  EXPECT_TRUE(drawn(DiskPane(figures), {58, 2})[0].starts_with("System"));
}

TEST_F(HostDiskPane, ABarIsSplitByKindInTheLegendsOrder) {
  split(*volume("System", 100, 80), 10, 20, 10, 10);
  EXPECT_EQ(bar(),
            (std::vector{Colour::Purple, Colour::Blue, Colour::Blue, Colour::Orange, Colour::Yellow,
                         Colour::Teal, Colour::Teal, Colour::Teal, Colour::Track, Colour::Track}));
}

TEST_F(HostDiskPane, AVolumeThatIsNotCountedYetIsNotSplit) {
  volume("System", 100, 20);
  EXPECT_EQ(bar()[1], Colour::Grey);
  EXPECT_EQ(bar()[2], Colour::Track);
}

TEST_F(HostDiskPane, KindsThatLeaveNoRestDoNotSplitTheBar) {
  auto made = volume("System", 100, 20);
  split(*made, 90, 90, 0, 0);
  made->set("has_accumulated_sizes", false);
  EXPECT_EQ(bar()[0], Colour::Grey);
  EXPECT_EQ(bar()[2], Colour::Track);
  EXPECT_EQ(DiskPane(figures).note(), "1 mounted");
}

TEST_F(HostDiskPane, AVolumeOfNoSizeHasAnEmptyBar) {
  volume("System", 0, 0);
  EXPECT_EQ(bar(), std::vector(10, Colour::Track));
}

TEST_F(HostDiskPane, ANarrowOneGoesWithoutBars) {
  volume("System", 100, 50);
  take();
  EXPECT_EQ(drawn(DiskPane(figures), {30, 1})[0], "System           50 B of 100 B");
}

TEST_F(HostDiskPane, NamesAreSafeToPrint) {
  volume("a\x1b\xff", 100, 50);
  take();
  EXPECT_TRUE(drawn(DiskPane(figures), {58, 1})[0].starts_with("a\uFFFD\uFFFD "));
}

TEST_F(HostDiskPane, AsksForARowAVolumeUpToTenAndOneForTheLegend) {
  EXPECT_EQ(DiskPane(figures).rows().wanted, 2);
  EXPECT_EQ(DiskPane(figures).rows().minimum, 1);
  for (int i = 0; i < 20; ++i) volume("System", 100, 50);
  take();
  EXPECT_EQ(DiskPane(figures).rows().wanted, 11);
  EXPECT_EQ(DiskPane(figures).rows().minimum, 4);
  volumes->resize(3, Value(0));
  take();
  EXPECT_EQ(DiskPane(figures).rows().wanted, 4);
}

TEST_F(HostDiskPane, OtherReportsAndWhatIsNoVolumeAreIgnored) {
  figures->take({"disk", "elsewhere", {Value(volumes)}});
  figures->take({"disk", "diskDetails", {std::nullopt}});
  EXPECT_FALSE(figures->known());
  volumes->emplace_back("text");
  take();
  EXPECT_TRUE(figures->known());
  EXPECT_TRUE(figures->rows().empty());
}

}  // namespace
}  // namespace vantile::host
