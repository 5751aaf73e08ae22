// What a queue says and does when the system has no more to give. Each test asks for all there is
// in a process of its own.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <string>

#include "fakes/recorded_log.h"
#include "live/sanitized.h"
#include "watching/real_folders.h"

namespace vantile::testing {
namespace {

constexpr int skipped = 77;

/// Runs `body` in a child process; its code.
int inChild(const std::function<int()>& body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body());
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Sets a limit of a user namespace of its own, whose watches and instances are counted apart.
bool limitInotify(const char* name, const char* number) {
  if (::unshare(CLONE_NEWUSER) != 0) return false;
  std::ofstream file(std::string("/proc/sys/user/") + name);
  return static_cast<bool>(file << number << std::flush);
}

/// Leaves no descriptor below `limit`, nor any above. Which of them were open before depends on who
/// started the tests.
bool takeAllDescriptors(rlim_t limit) {
  const rlimit descriptors = {limit, limit};
  if (::setrlimit(RLIMIT_NOFILE, &descriptors) != 0) return false;
  const int any = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  for (int taken = any; taken >= 0;) taken = ::dup(any);
  return errno == EMFILE;
}

bool endsWith(const std::vector<std::string>& lines, const std::string& beginning) {
  return !lines.empty() && lines.back().starts_with(beginning);
}

class Limits : public RealFolders {};

TEST_F(Limits, AWantOfDescriptorsIsNamedWithTheLimit) {
  // One looks at an object's type through a pipe, and takes it for broken when it gets none.
  if (sanitized) GTEST_SKIP() << "the sanitizers' own checks take descriptors";
  const int code = inChild([this] {
    const RecordedLog log;
    const auto queue = FSWatchQueue::init();
    if (!takeAllDescriptors(64)) return skipped;
    queue->addPath(watched);
    if (queue->numberOfWatchedPaths() != 0) return 1;
    if (log.lines.size() != 2 || log.lines[0].find(watched) == std::string::npos) return 2;
    return log.lines[1] == "WatchQueue: RLIMIT_NOFILE is 64" ? 0 : 3;
  });
  if (code == skipped) GTEST_SKIP() << "the number of descriptors can't be limited here";
  EXPECT_EQ(code, 0);
}

TEST_F(Limits, AWantOfWatchesIsNamedWithTheLimitAndTheRestGoesOn) {
  const int code = inChild([this] {
    if (!limitInotify("max_inotify_watches", "3")) return skipped;
    const RecordedLog log;
    const auto queue = FSWatchQueue::init();
    for (int number = 0; number < 5; ++number)
      queue->addPath(disk.file("watched/" + std::to_string(number)));
    if (queue->numberOfWatchedPaths() != 3 || log.lines.size() != 4) return 1;
    if (!endsWith(log.lines, "WatchQueue: fs.inotify.max_user_watches is ")) return 2;
    queue->removePath(disk.path("watched/0"));
    queue->addPath(disk.path("watched/4"));
    return queue->numberOfWatchedPaths() == 3 ? 0 : 3;
  });
  if (code == skipped) GTEST_SKIP() << "user namespaces are not allowed here";
  EXPECT_EQ(code, 0);
}

TEST_F(Limits, AWantOfInstancesIsNamedWithTheLimit) {
  const int code = inChild([] {
    if (!limitInotify("max_inotify_instances", "2")) return skipped;
    const RecordedLog log;
    const auto first = FSWatchQueue::init(), second = FSWatchQueue::init();
    if (!first || !second || FSWatchQueue::init()) return 1;
    return endsWith(log.lines, "WatchQueue: fs.inotify.max_user_instances is ") ? 0 : 2;
  });
  if (code == skipped) GTEST_SKIP() << "user namespaces are not allowed here";
  EXPECT_EQ(code, 0);
}

}  // namespace
}  // namespace vantile::testing
