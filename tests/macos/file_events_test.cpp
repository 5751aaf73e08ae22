#include "vantile/platform/file_events.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <thread>

#include "seam.h"
#include "temporary_folder.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

constexpr int vnodeFilter = -4, userFilter = -10;
constexpr unsigned trigger = 0x01000000;

std::string sysctlValue(std::int32_t value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

class FileEventsSeam : public Seam {
 protected:
  FileEventsSeam() {
    folder.write("notes", "four");
    item = events->open(folder / "notes");
    queue = newQueue();
    fakes::machine.eventCalls.clear();
  }
  void TearDown() override {
    events->close(item);
    queue.reset();
    Seam::TearDown();
  }

  std::shared_ptr<FileEventQueue> newQueue() const {
    int error = 0;
    auto made = events->newQueue(error);
    EXPECT_EQ(error, 0);
    return made;
  }

  const std::shared_ptr<FileEvents> events = systemFileEvents();
  TemporaryFolder folder;
  int item = -1;
  std::shared_ptr<FileEventQueue> queue;
};

TEST_F(FileEventsSeam, AQueueIsMadeWithWhatInterruptsIt) {
  const auto another = newQueue();
  ASSERT_EQ(fakes::machine.eventCalls.size(), 1u);
  EXPECT_EQ(fakes::machine.eventCalls[0].changes,
            std::vector{(fakes::KernelEvent{.filter = userFilter, .flags = 0x21})});
}

TEST_F(FileEventsSeam, TellWhyThereIsNoQueue) {
  fakes::machine.queueError = EMFILE;
  int error = 0;
  EXPECT_FALSE(events->newQueue(error));
  EXPECT_EQ(error, EMFILE);
}

TEST_F(FileEventsSeam, AreNoQueueWhereItCantBeInterrupted) {
  fakes::machine.changeError = ENOMEM;
  int error = 0;
  EXPECT_FALSE(events->newQueue(error));
  EXPECT_EQ(error, ENOMEM);
}

TEST_F(FileEventsSeam, AnItemIsOpenedForItsEventsAlone) {
  constexpr int eventsOnly = 0x8000;
  EXPECT_GE(item, 0);
  EXPECT_EQ(fakes::machine.openFlags, eventsOnly);
  EXPECT_EQ(fakes::machine.openMode, 0);
  EXPECT_EQ(::fcntl(item, F_GETFD), FD_CLOEXEC);
}

TEST_F(FileEventsSeam, AnInterruptedOpeningIsTriedAgain) {
  fakes::machine.interruptedOpens = 2;
  const int again = events->open(folder / "notes");
  EXPECT_GE(again, 0);
  EXPECT_EQ(fakes::machine.interruptedOpens, 0);
  events->close(again);
}

TEST_F(FileEventsSeam, WhatCantBeOpenedGivesTheError) {
  EXPECT_EQ(events->open(folder / "none"), -ENOENT);
  EXPECT_EQ(events->open(folder / "notes/below"), -ENOTDIR);
  EXPECT_EQ(events->open(""), -ENOENT);
}

TEST_F(FileEventsSeam, AnItemTellsWhichFileItIs) {
  struct stat status = {};
  ASSERT_EQ(::stat((folder / "notes").c_str(), &status), 0);
  const auto identity = events->identity(item);
  ASSERT_TRUE(identity);
  EXPECT_EQ(identity->inode, status.st_ino);
  EXPECT_EQ(identity->device, status.st_dev);
}

TEST_F(FileEventsSeam, WhatIsNoItemHasNoIdentityAndIsNotClosed) {
  EXPECT_FALSE(events->identity(-1));
  EXPECT_FALSE(events->identity(FileEvents::firstToken));
  events->close(-1);
  events->close(FileEvents::firstToken);
  EXPECT_TRUE(events->identity(item));
}

TEST_F(FileEventsSeam, AWatchIsOneRecordWithTheTagAsANumber) {
  EXPECT_EQ(queue->add(item, fileWritten | fileRenamed, 0x8765432112345678), 0);
  ASSERT_EQ(fakes::machine.eventCalls.size(), 1u);
  const auto& call = fakes::machine.eventCalls[0];
  EXPECT_EQ(call.changes, std::vector{(fakes::KernelEvent{.ident = std::uint64_t(item),
                                                          .filter = vnodeFilter,
                                                          .flags = 0x25,
                                                          .fflags = 0x22,
                                                          .data = 0,
                                                          .udata = 0x8765432112345678})});
  EXPECT_FALSE(call.hasEvents);
  EXPECT_EQ(call.room, 0);
  EXPECT_EQ(call.seconds, 0);
  EXPECT_EQ(call.nanoseconds, 0);
}

TEST_F(FileEventsSeam, WhatTheKernelSaysToAWatchIsNotLookedAt) {
  fakes::machine.changeError = ENOMEM;
  EXPECT_EQ(queue->add(item, fileWritten, 1), 0);
  EXPECT_EQ(queue->add(FileEvents::firstToken, fileWritten, 1), 0);
}

TEST_F(FileEventsSeam, AnEventComesBackWithItsTag) {
  queue->add(item, fileWritten | fileDeleted, 0x8765432112345678);
  fakes::happen(item, fileWritten | fileGrew);
  const auto event = queue->wait(1s);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->tag, 0x8765432112345678u);
  EXPECT_EQ(event->changes, std::uint32_t{fileWritten});
  queue->delivered(event->tag);
  EXPECT_FALSE(queue->wait(1s));
}

TEST_F(FileEventsSeam, AWaitTakesOneEvent) {
  const int other = events->open(folder.path().string());
  queue->add(item, fileWritten, 1);
  queue->add(other, fileWritten, 2);
  fakes::machine.eventCalls.clear();
  fakes::happen(item, fileWritten);
  fakes::happen(other, fileWritten);
  EXPECT_EQ(queue->wait(1s)->tag, 1u);
  EXPECT_EQ(queue->wait(1s)->tag, 2u);
  EXPECT_TRUE(fakes::machine.eventCalls[0].changes.empty());
  EXPECT_EQ(fakes::machine.eventCalls[0].room, 1);
  events->close(other);
}

TEST_F(FileEventsSeam, AWaitTakesAsLongAsItIsAskedTo) {
  const auto before = fakes::uptime();
  EXPECT_FALSE(queue->wait(1s));
  EXPECT_FALSE(queue->wait(2500ms));
  EXPECT_FALSE(queue->wait(0s));
  EXPECT_FALSE(queue->wait(-1s));
  EXPECT_EQ(fakes::uptime() - before, 3500ms);
  const auto& calls = fakes::machine.eventCalls;
  ASSERT_EQ(calls.size(), 4u);
  const auto timeOf = [&calls](std::size_t i) {
    return std::pair(calls[i].seconds, calls[i].nanoseconds);
  };
  EXPECT_EQ(timeOf(0), std::pair(std::int64_t{1}, std::int64_t{0}));
  EXPECT_EQ(timeOf(1), std::pair(std::int64_t{2}, std::int64_t{500'000'000}));
  EXPECT_EQ(timeOf(2), std::pair(std::int64_t{0}, std::int64_t{0}));
  EXPECT_EQ(timeOf(3), std::pair(std::int64_t{0}, std::int64_t{0}));
}

TEST_F(FileEventsSeam, ASignalEndsAWaitWithNothing) {
  queue->add(item, fileWritten, 1);
  fakes::happen(item, fileWritten);
  fakes::machine.interruptedWaits = 1;
  EXPECT_FALSE(queue->wait(1s));
  EXPECT_TRUE(queue->wait(1s));
}

TEST_F(FileEventsSeam, AnInterruptEndsTheNextWaitAlone) {
  queue->interrupt();
  ASSERT_EQ(fakes::machine.eventCalls.size(), 1u);
  EXPECT_EQ(fakes::machine.eventCalls[0].changes,
            std::vector{(fakes::KernelEvent{.filter = userFilter, .fflags = trigger})});
  const auto before = fakes::uptime();
  EXPECT_FALSE(queue->wait(1s));
  EXPECT_EQ(fakes::uptime(), before);
  EXPECT_FALSE(queue->wait(1s));
  EXPECT_EQ(fakes::uptime(), before + 1s);
}

TEST_F(FileEventsSeam, AnInterruptEndsAWaitInProgress) {
  std::optional<FileEvent> event = FileEvent();
  std::thread waiting([&] { event = queue->wait(std::chrono::nanoseconds::max()); });
  fakes::awaitSleeper();
  queue->interrupt();
  waiting.join();
  EXPECT_FALSE(event);
}

TEST_F(FileEventsSeam, AWatchCanBeAddedToAQueueThatIsWaitedFor) {
  std::optional<FileEvent> event;
  std::thread waiting([&] { event = queue->wait(std::chrono::nanoseconds::max()); });
  fakes::awaitSleeper();
  queue->add(item, fileWritten, 7);
  fakes::happen(item, fileWritten);
  waiting.join();
  ASSERT_TRUE(event);
  EXPECT_EQ(event->tag, 7u);
}

TEST_F(FileEventsSeam, AddingAgainReplacesWhatIsWatchedFor) {
  queue->add(item, fileWritten, 1);
  queue->add(item, fileRenamed, 2);
  fakes::happen(item, fileWritten);
  EXPECT_FALSE(queue->wait(0s));
  fakes::happen(item, fileRenamed);
  EXPECT_EQ(queue->wait(0s)->tag, 2u);
}

TEST_F(FileEventsSeam, AWatchEndsWithItsItem) {
  queue->add(item, fileWritten, 1);
  events->close(item);
  fakes::happen(item, fileWritten);
  EXPECT_FALSE(queue->wait(0s));
}

TEST_F(FileEventsSeam, AQueueIsClosedOnce) {
  EXPECT_EQ(queue->close(), 0);
  const int taken = ::open("/dev/null", O_RDONLY | O_CLOEXEC);  // by its number, which came free
  EXPECT_EQ(queue->close(), 0);
  queue.reset();
  EXPECT_EQ(::fcntl(taken, F_GETFD), FD_CLOEXEC);
  ::close(taken);
}

TEST_F(FileEventsSeam, ACloseThatFailsTellsWhy) {
  const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::close(next);
  const auto doomed = newQueue();  // has the lowest number that was free
  ::close(next);
  EXPECT_EQ(doomed->close(), EBADF);
  EXPECT_EQ(doomed->close(), 0);
}

TEST_F(FileEventsSeam, AClosedQueueGivesNothingAndHarmsNobody) {
  queue->add(item, fileWritten, 1);
  queue->close();
  fakes::machine.eventCalls.clear();
  EXPECT_FALSE(queue->wait(1s));
  EXPECT_EQ(queue->add(item, fileWritten, 1), 0);
  queue->interrupt();
  EXPECT_TRUE(fakes::machine.eventCalls.empty());
}

TEST_F(FileEventsSeam, TellTheLimitBehindAnError) {
  fakes::machine.sysctlValues["kern.maxfiles"] = sysctlValue(49152);
  EXPECT_EQ(events->limitBehind(EMFILE), "RLIMIT_NOFILE is 256");
  EXPECT_EQ(events->limitBehind(ENFILE), "kern.maxfiles is 49152");
  EXPECT_FALSE(events->limitBehind(ENOENT));
  EXPECT_FALSE(events->limitBehind(0));
}

TEST_F(FileEventsSeam, TellTheKernelsLimitWhereTheProcessHasNone) {
  fakes::machine.sysctlValues["kern.maxfilesperproc"] = sysctlValue(24576);
  fakes::machine.descriptorLimit = fakes::unlimited;
  EXPECT_EQ(events->limitBehind(EMFILE), "kern.maxfilesperproc is 24576");
}

TEST_F(FileEventsSeam, TellNoLimitThatTheKernelDoesNotTell) {
  fakes::machine.descriptorLimit = std::nullopt;
  EXPECT_FALSE(events->limitBehind(EMFILE));
  EXPECT_FALSE(events->limitBehind(ENFILE));
}

TEST_F(FileEventsSeam, StandWhereTheyWereOpened) {
  events->standsAt(item, folder / "elsewhere");
  queue->add(item, fileWritten, 1);
  fakes::happen(item, fileWritten);
  EXPECT_TRUE(queue->wait(0s));
}

}  // namespace
}  // namespace vantile
