#include "vantile/platform/linux/category_sizes.h"

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "vantile/platform/linux/mailbox.h"

#include "fakes/gate.h"
#include "fakes/recorded_log.h"
#include "unit/platform/usage_fixture.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

/// Keeps what is to run on a thread of its own; runs it on one that it joins when it is told to.
class JoinedThreads final : public Threads {
 public:
  ~JoinedThreads() override { join(); }
  bool detach(const char* name, std::function<void()> body) override {
    asked += name == std::string("vantile-usage");
    if (refuses) return false;
    running.emplace_back(std::move(body));
    return true;
  }
  void join() {
    for (auto& thread : running)
      if (thread.joinable()) thread.join();
  }
  int asked = 0;
  bool refuses = false;
  std::vector<std::thread> running;
};

struct CategorySizesTest : testing::UsageTest {
  std::unique_ptr<LinuxVolumeCategories> make(
      std::function<void()> before = [] {}, std::function<void()> listing = [] {}) {
    LinuxVolumeCategories::Means means;
    means.accounting = [this, before, listing](bool mayHang) {
      before();
      UsageAccounting::Means accounting;
      accounting.volumeAt = [this, mayHang, volumes = std::make_shared<UsageVolumes>()](
                                const std::string& mountPoint) {
        EXPECT_EQ(mayHang, mountPoint == served);
        if (mountPoint == served) answers.pass();
        return volumes->at(mountPoint);
      };
      accounting.cacheFolder = caches.path("vantile");
      accounting.installed = {tree.path("usr")};
      accounting.presentSecond = [listing] {
        listing();
        return muchLater();
      };
      return accounting;
    };
    means.mayHang = [this](const std::string& mountPoint) { return mountPoint == served; };
    means.threads = threads;
    means.retry = 0ns;
    return std::make_unique<LinuxVolumeCategories>(std::move(means));
  }
  /// The list, once the thread has it.
  std::optional<Array> awaited(VolumeCategories& categories) {
    for (;;) {
      if (auto sizes = categories.of(tree.path())) return sizes->sizes;
      std::this_thread::yield();
    }
  }

  const testing::TemporaryFolder caches;
  const std::string served = tree.path("served");
  testing::Gate answers;  // before what serves that answers
  const std::shared_ptr<JoinedThreads> threads = std::make_shared<JoinedThreads>();
};

TEST_F(CategorySizesTest, TheListHasItsKindsInTheirPlaces) {
  tree.file("usr/program", contents(1));
  tree.file("film.mkv", contents(10));
  tree.file("song.flac", contents(20));
  tree.file("picture.jpg", contents(40));
  const auto categories = make();
  categories->want({tree.path()});
  Array expected(13, Value(std::uint64_t{0}));
  expected[6] = Value(bytes("film.mkv"));
  expected[7] = Value(bytes("usr/program"));
  expected[9] = Value(bytes("song.flac"));
  expected[12] = Value(bytes("picture.jpg"));
  EXPECT_EQ(awaited(*categories), expected);
}

TEST_F(CategorySizesTest, WhatIsNotWantedHasNoItem) {
  const auto categories = make();
  EXPECT_FALSE(categories->of(tree.path()));
  EXPECT_EQ(threads->asked, 0);
  categories->want({tree.path()});
  awaited(*categories);
  EXPECT_FALSE(categories->of("/elsewhere"));
  categories->want({});
  EXPECT_FALSE(categories->of(tree.path()));
}

TEST_F(CategorySizesTest, NoneWantedEndsTheThread) {
  const auto categories = make();
  categories->want({tree.path()});
  awaited(*categories);
  categories->want({});
  threads->join();
  categories->want({tree.path()});
  EXPECT_EQ(threads->asked, 2);
  EXPECT_TRUE(awaited(*categories));
}

TEST_F(CategorySizesTest, TheOwnersEndEndsTheThread) {
  auto categories = make();
  categories->want({tree.path()});
  awaited(*categories);
  categories.reset();
  threads->join();
}

TEST_F(CategorySizesTest, AThreadThatIsHeldUpHoldsUpNobody) {
  testing::Gate gate;
  auto categories = make([&gate] { gate.pass(); });
  categories->want({tree.path()});
  gate.awaitEntry();
  EXPECT_FALSE(categories->of(tree.path()));
  categories->want({tree.path(), "/elsewhere"});
  categories.reset();  // would not come back
  gate.open();
  threads->join();
}

TEST_F(CategorySizesTest, TheOwnersEndEndsAPassAtOnceAndTheNextOneTakesItUp) {
  constexpr int folders = 60, before = 30;
  for (int number = 0; number < folders; ++number)
    tree.file("f" + std::to_string(number) + "/a.mkv", contents(1));
  testing::Gate gate;
  std::atomic<int> listed = 0;
  const auto inTheMidst = [&] {
    if (++listed == before) gate.pass();
  };
  auto categories = make([] {}, inTheMidst);
  categories->want({tree.path()});
  gate.awaitEntry();
  categories.reset();
  gate.open();
  threads->join();
  EXPECT_EQ(listed, before);  // the one that it was in
  categories = make([] {}, inTheMidst);
  categories->want({tree.path()});
  EXPECT_EQ(awaited(*categories)->at(6), Value(folders * bytes("f0/a.mkv")));
  EXPECT_EQ(listed, folders + 2);  // the outermost, and that one again
}

TEST_F(CategorySizesTest, TheSameListIsNotHandedOnTwice) {
  const auto categories = make();
  categories->want({tree.path()});
  categories->want({tree.path()});
  EXPECT_EQ(threads->asked, 1);
  categories->want({});
  categories->want({});
  EXPECT_EQ(threads->asked, 1);
}

TEST_F(CategorySizesTest, AChangedListReachesTheThread) {
  const auto categories = make();
  categories->want({caches.path()});
  while (!categories->of(caches.path())) std::this_thread::yield();
  categories->want({caches.path(), tree.path()});
  EXPECT_TRUE(awaited(*categories));
  EXPECT_TRUE(categories->of(caches.path()));
  EXPECT_EQ(threads->asked, 1);
}

TEST_F(CategorySizesTest, WithoutAThreadThereAreNoFiguresAndItIsTriedAgain) {
  threads->refuses = true;
  const auto categories = make();
  categories->want({tree.path()});
  EXPECT_FALSE(categories->of(tree.path()));
  threads->refuses = false;
  EXPECT_TRUE(awaited(*categories));  // asked for again, nothing else is new
  EXPECT_EQ(threads->asked, 3);
}

TEST_F(CategorySizesTest, AVolumeThatHangsHoldsUpNoOther) {
  tree.file("served/film.mkv", contents(10));
  auto categories = make();
  categories->want({served, tree.path()});
  answers.awaitEntry();
  EXPECT_TRUE(awaited(*categories));
  EXPECT_FALSE(categories->of(served));
  EXPECT_EQ(threads->asked, 2);
  categories->want({tree.path()});
  EXPECT_TRUE(awaited(*categories));
  categories.reset();  // would not come back
  answers.open();
  threads->join();
}

TEST_F(CategorySizesTest, AVolumeThatMayHangIsCounted) {
  tree.file("served/film.mkv", contents(10));
  answers.open();
  const auto categories = make();
  categories->want({served});
  std::optional<CategorySizes> sizes;
  while (!(sizes = categories->of(served))) std::this_thread::yield();
  EXPECT_EQ(sizes->sizes->at(6), Value(bytes("served/film.mkv")));
  EXPECT_EQ(threads->asked, 1);
}

TEST_F(CategorySizesTest, AFailureIsTriedAgainWithOneLogLine) {
  testing::RecordedLog log;
  int failures = 3;
  {
    const auto categories = make([&failures] {
      if (failures-- > 0) throw std::runtime_error("short of memory");
    });
    categories->want({tree.path()});
    EXPECT_TRUE(awaited(*categories));
    categories->want({});
    threads->join();
  }
  EXPECT_EQ(failures, -1);
  EXPECT_EQ(log.lines, std::vector<std::string>{"usage by category threw: short of memory"});
}

TEST_F(CategorySizesTest, KindsAreNotLookedUpByTheThreadThatCounts) {
  // It may hold a lock that others want, and gets the processor last.
  tree.file("film.mkv", contents(10));
  const auto categories = make();
  categories->want({tree.path()});
  awaited(*categories);
  EXPECT_EQ(threads->running.size(), 2u);
}

struct SystemAccountingTest : testing::UsageTest {
  UsageAccounting::Means means(bool mayHang = false) {
    const auto variable = [this](const char* name) -> std::optional<std::string> {
      if (name == std::string("XDG_CACHE_HOME")) return tree.path("caches");
      if (name == std::string("XDG_DATA_HOME")) return tree.path("data");
      return std::nullopt;
    };
    return systemAccounting(mayHang, XdgFolders(tree.path("home"), variable),
                            {.proc = tree.path("proc")}, tree.path());
  }
};

TEST_F(SystemAccountingTest, KnowsWhereApplicationsAreInstalled) {
  const InstalledFolders installed(means().installed);
  for (const auto* const folder :
       {"usr", "opt", "var/lib/flatpak", "data/flatpak", "var/lib/snapd", "snap"})
    EXPECT_EQ(installed.at(tree.path(folder)), Installed::here) << folder;
  for (const auto* const folder : {"home", "srv", "var/lib/other", "data/other"})
    EXPECT_EQ(installed.at(tree.path(folder)), Installed::none) << folder;
}

TEST_F(SystemAccountingTest, ThatIsWhereLinksThereLead) {
  tree.folder("disk/programs");
  tree.symbolicLink("opt", tree.path("disk/programs"));
  const InstalledFolders installed(means().installed);
  EXPECT_EQ(installed.at(tree.path("disk/programs")), Installed::here);
  EXPECT_EQ(installed.at(tree.path("disk")), Installed::below);
}

TEST_F(SystemAccountingTest, ItsRecordsAreInTheUsersCaches) {
  EXPECT_EQ(means().cacheFolder, tree.path("caches/vantile"));
}

TEST_F(SystemAccountingTest, HasVolumesOfItsSortAlone) {
  tree.file("proc/self/mountinfo",
            "30 1 8:17 / " + tree.folder("served") + " rw - fuseblk /dev/sdb1 rw\n");
  EXPECT_TRUE(means(true).volumeAt(tree.path("served")));
  EXPECT_FALSE(means(false).volumeAt(tree.path("served")));
  EXPECT_TRUE(means(false).volumeAt(tree.folder("other")));
  EXPECT_FALSE(means(true).volumeAt(tree.path("other")));
}

TEST(MailboxTest, TheLatestMessageIsTakenOnce) {
  Mailbox<int> box;
  EXPECT_TRUE(box.isEmpty());
  EXPECT_EQ(box.take(), nullptr);
  box.put(1);
  box.put(2);
  EXPECT_FALSE(box.isEmpty());
  EXPECT_EQ(*box.take(), 2);
  EXPECT_EQ(box.take(), nullptr);
}

TEST_F(CategorySizesTest, AVolumeThatTookAnothersPlaceIsCountedAsItsOwn) {
  tree.file("volume/film.mkv", contents(10));
  const auto place = tree.path("volume");
  const auto categories = make();
  const auto movies = [&](const VolumeKey& volume) {
    for (;;) {
      if (auto sizes = categories->of(volume)) return (*sizes->sizes)[6].uint64();
      std::this_thread::yield();
    }
  };
  categories->want({VolumeKey(place, "1")});
  EXPECT_EQ(movies({place, "1"}), bytes("volume/film.mkv"));
  EXPECT_FALSE(categories->of({place, "2"}));
  std::filesystem::rename(place, tree.path("elsewhere"));
  tree.folder("volume");
  categories->want({VolumeKey(place, "2")});
  EXPECT_FALSE(categories->of({place, "1"}));
  EXPECT_EQ(movies({place, "2"}), 0u);
}

}  // namespace
}  // namespace vantile
