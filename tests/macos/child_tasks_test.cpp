#include "vantile/platform/child_tasks.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include "seam.h"

namespace vantile {
namespace {

using ChildTasksSeam = Seam;

constexpr int closeOnExecByDefault = 0x4000;

std::string outputOf(ChildTask& task) {
  std::string output;
  while (const auto data = task.availableData()) {
    if (data->empty()) break;
    output += *data;
  }
  return output;
}

void waitForEndOf(ChildTask& task) {
  while (task.isRunning()) systemChildTasks()->pause(std::chrono::milliseconds(1));
}

TEST_F(ChildTasksSeam, GivesTheOutputOfAProgram) {
  const auto task = systemChildTasks()->launch("/bin/echo", {"two words", "and more"});
  ASSERT_TRUE(task);
  EXPECT_EQ(outputOf(*task), "two words and more\n");
  waitForEndOf(*task);
  EXPECT_FALSE(task->isRunning());
}

TEST_F(ChildTasksSeam, KeepsTheHostsDescriptorsFromTheProgram) {
  ASSERT_TRUE(systemChildTasks()->launch("/bin/true", {}));
  EXPECT_TRUE(fakes::machine.spawnFlags & closeOnExecByDefault);
}

TEST_F(ChildTasksSeam, GivesTheProgramNoInputAndSilencesItsErrors) {
  const auto task = systemChildTasks()->launch("/bin/sh", {"-c", "cat; echo lost >&2; echo end"});
  ASSERT_TRUE(task);
  EXPECT_EQ(outputOf(*task), "end\n");
}

TEST_F(ChildTasksSeam, UnblocksTheSignalsThatTheCallerBlocks) {
  sigset_t terminate, before;
  sigemptyset(&terminate);
  sigaddset(&terminate, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &terminate, &before);
  const auto task = systemChildTasks()->launch("/bin/sh", {"-c", "kill -TERM $$; echo alive"});
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  ASSERT_TRUE(task);
  EXPECT_EQ(outputOf(*task), "");
}

TEST_F(ChildTasksSeam, GivesNullForAProgramThatIsNotThere) {
  EXPECT_FALSE(systemChildTasks()->launch("/no/such/program", {}));
}

TEST_F(ChildTasksSeam, SaysThatAProgramStillRuns) {
  const auto task = systemChildTasks()->launch("/bin/sleep", {"600"});
  ASSERT_TRUE(task);
  EXPECT_TRUE(task->isRunning());
}

TEST_F(ChildTasksSeam, EndsAProgramThatNobodyWaitsForAnyMore) {
  const auto before = std::chrono::steady_clock::now();
  ASSERT_TRUE(systemChildTasks()->launch("/bin/sleep", {"600"}));
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(300));
}

TEST_F(ChildTasksSeam, TakesAProgramReapedElsewhereAsEnded) {
  const auto before = ::signal(SIGCHLD, SIG_IGN);
  const auto task = systemChildTasks()->launch("/bin/true", {});
  ASSERT_TRUE(task);
  outputOf(*task);
  waitForEndOf(*task);
  ::signal(SIGCHLD, before);
}

TEST_F(ChildTasksSeam, WorksForAHostWithoutStandardInput) {
  const int kept = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 100);
  ::close(STDIN_FILENO);  // the next pipe takes its number
  const auto task = systemChildTasks()->launch("/bin/echo", {"heard"});
  EXPECT_EQ(::fcntl(STDIN_FILENO, F_GETFD), -1);
  if (kept >= 0) {
    ::dup2(kept, STDIN_FILENO);
    ::close(kept);
  }
  ASSERT_TRUE(task);
  EXPECT_EQ(outputOf(*task), "heard\n");
}

}  // namespace
}  // namespace vantile
