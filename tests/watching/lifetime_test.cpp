// Queues that come and go, and threads that use one at the same time.

#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "vantile/platform/linux/file_events.h"
#include "vantile/watchqueue/watch_queue_ports.h"

#include "fakes/open_descriptors.h"
#include "fakes/recorded_log.h"
#include "live/sanitized.h"
#include "watching/real_folders.h"

namespace vantile::testing {
namespace {

namespace fs = std::filesystem;

std::size_t residentPages() {
  std::size_t size = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return resident;
}

std::ptrdiff_t threads() {
  return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

bool awaitThreads(std::ptrdiff_t count) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (threads() > count && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  return threads() <= count;
}

class Lifetime : public RealQueue {};

TEST_F(Lifetime, TenThousandQueuesLeaveDescriptorsMemoryAndThreadsAsTheyWere) {
  const int cycles = sanitized ? 500 : 10000;
  const auto cycle = [this](int number) {
    const auto one = FSWatchQueue::init();
    ASSERT_TRUE(one);
    one->setDelegate(delegate);
    one->addPath(watched);
    if (number % 2 == 0) disk.file("watched/a");
    if (number % 2 == 1) disk.remove("watched/a");
    RunLoop::main().dispatch();
    // Threads of queues that are gone still end, each with one of the user's inotify instances.
    awaitThreads(32);
  };
  settle();
  const auto threadsBefore = threads();
  for (int number = 0; number < cycles / 5; ++number) cycle(number);  // the allocator settles
  settle();
  ASSERT_TRUE(awaitThreads(threadsBefore));
  const auto descriptorsBefore = openDescriptors();
  const auto pagesBefore = residentPages();
  for (int number = 0; number < cycles; ++number) cycle(number);
  settle();
  EXPECT_TRUE(awaitThreads(threadsBefore));
  EXPECT_EQ(openDescriptors(), descriptorsBefore);
  // A leak of one entry a cycle would be more than three megabytes.
  if (!sanitized) {
    EXPECT_LT(residentPages(), pagesBefore + 512);
  }
}

TEST_F(Lifetime, ADestroyedQueueIsGoneAtOnceThoughItsThreadWaits) {
  settle();
  const auto before = threads();
  auto one = FSWatchQueue::init();
  one->addPath(watched);
  EXPECT_EQ(threads(), before + 1);
  const auto begin = std::chrono::steady_clock::now();
  one.reset();
  EXPECT_TRUE(awaitThreads(before));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(900));
}

TEST_F(Lifetime, TheLastReferenceMayGoInsideADelegatesCall) {
  auto one = FSWatchQueue::init();
  const auto last = std::make_shared<FSWatchQueueDelegate>();
  int calls = 0;
  last->WatchQueueReceivedNotificationForPath = [&](FSWatchQueue&, const std::string&,
                                                    const std::string&) {
    ++calls;
    one.reset();
  };
  one->setDelegate(last);
  one->addPathNotifyingAbout(watched, 2);
  const std::weak_ptr<FSWatchQueue> gone = one;
  disk.file("watched/a");
  ASSERT_TRUE(serveUntil([&] { return calls > 0; }));
  EXPECT_TRUE(serveUntil([&] { return gone.expired(); }));
  disk.file("watched/b");
  settle();
  EXPECT_EQ(calls, 1);
}

TEST_F(Lifetime, ManyThreadsMayUseOneQueueAndItMayGoMeanwhile) {
  const RecordedLog log;
  const int rounds = sanitized ? 10 : 30;
  std::atomic<int> told = 0;
  for (int round = 0; round < rounds; ++round) {
    auto one = FSWatchQueue::init();
    bool done = false;
    std::vector<std::thread> users;
    for (unsigned user = 0; user < 4; ++user) {
      users.emplace_back([&, user, mine = one] {
        std::minstd_rand random(user + 1);
        for (int step = 0; step < 200; ++step) {
          const auto path = disk.path("watched/" + std::to_string(random() % 8));
          switch (random() % 8) {
            case 0:
              mine->addPath(path);
              break;
            case 1:
              mine->addPathNotifyingAbout(path, 33);
              break;
            case 2:
              mine->removePath(path);
              break;
            case 3:
              std::ofstream(path, std::ios::app) << "x";
              break;
            case 4:
              ::rename(path.c_str(), (path + "r").c_str());
              break;
            case 5:
              ::unlink(path.c_str());
              break;
            case 6: {
              auto other = std::make_shared<FSWatchQueueDelegate>();
              other->WatchQueueReceivedNotificationForPath =
                  [&told](FSWatchQueue& queue_, const std::string&, const std::string& at) {
                    ++told;
                    if (told % 50 == 0) queue_.removePath(at);
                  };
              mine->setDelegate(random() % 4 == 0 ? nullptr : other);
              break;
            }
            default:
              if (random() % 50 == 0) mine->removeAllPaths();
              mine->numberOfWatchedPaths();
          }
        }
        if (user == 0) RunLoop::main().post([&done] { done = true; });
      });
    }
    one.reset();
    serveUntil([&] { return done; });
    for (auto& user : users) user.join();
  }
  settle();
  EXPECT_GT(told, 0);
}

}  // namespace
}  // namespace vantile::testing
