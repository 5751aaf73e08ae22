// A whole cleaning run inside a memory group of its own: it must make the kernel give up cache,
// and get nobody killed.

#include "vantile/memory/cleaner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "vantile/platform/parsers/cgroup.h"
#include "vantile/platform/parsers/text.h"

#include "live/cleaner_helper.h"
#include "live/real_disk.h"
#include "live/sanitized.h"

namespace vantile {
namespace {

constexpr std::uint64_t mebibyte = 1 << 20;
constexpr std::uint64_t groupLimit = 1536 * mebibyte;
constexpr std::size_t fileMebibytes = 1024;

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool write(const std::string& path, const std::string& text) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool written = ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::close(file);
  return written;
}

/// A memory group below one of this process's own, gone at the test's end.
class MemoryGroupFolder {
 public:
  MemoryGroupFolder() {
    const auto groups = memoryGroups(contents("/proc/self/cgroup"),
                                     parseMountinfo(contents("/proc/self/mountinfo")));
    for (const auto& group : groups) {
      for (const auto& parent : group.folders)  // the process's own first, the root last
        if (make(parent + "/vantile-test-" + std::to_string(::getpid()), group.unified)) return;
    }
  }
  ~MemoryGroupFolder() {
    if (!path_.empty()) ::rmdir(path_.c_str());
  }
  MemoryGroupFolder(const MemoryGroupFolder&) = delete;
  MemoryGroupFolder& operator=(const MemoryGroupFolder&) = delete;

  explicit operator bool() const { return !path_.empty(); }
  const std::string& path() const { return path_; }
  const std::string& whyNot() const { return whyNot_; }

  std::optional<std::uint64_t> kills() const {
    const auto text = contents(path_ + (unified_ ? "/memory.events" : "/memory.oom_control"));
    return NamedNumbers(text).find("oom_kill ");
  }

 private:
  bool make(const std::string& path, bool unified) {
    if (::mkdir(path.c_str(), 0755) != 0) {
      whyNot_ = "can't make " + path;
      return false;
    }
    if (!write(path + (unified ? "/memory.max" : "/memory.limit_in_bytes"),
               std::to_string(groupLimit))) {
      whyNot_ = "can't limit " + path;
      ::rmdir(path.c_str());
      return false;
    }
    path_ = path;
    unified_ = unified;
    return true;
  }

  std::string path_;
  std::string whyNot_ = "memory is accounted in no group";
  bool unified_ = false;
};

/// The file cache charged to a group, of whichever version.
std::uint64_t cacheOf(const std::string& group) {
  const auto text = contents(group + "/memory.stat");
  NamedNumbers numbers(text);
  const auto old = numbers.find("total_cache ");
  return old ? *old : numbers.find("file ").value_or(0);
}

void dropCacheOf(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  ::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
  ::close(file);
}

/// Runs this executable as the helper; how it ended, as waitpid tells, and what it printed.
int runHelper(const std::string& group, const std::string& file, std::string& printed) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return -1;
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(ends[1], STDOUT_FILENO);
    ::execl("/proc/self/exe", "vantile_live_tests", testing::cleanInGroup, group.c_str(),
            file.c_str(), nullptr);
    ::_exit(127);
  }
  ::close(ends[1]);
  char piece[256];
  for (ssize_t count; (count = ::read(ends[0], piece, sizeof piece)) > 0;)
    printed.append(piece, static_cast<std::size_t>(count));
  ::close(ends[0]);
  int status = -1;
  ::waitpid(child, &status, 0);
  return status;
}

TEST(LiveCleaner, MakesTheKernelGiveUpCacheAndGetsNobodyKilled) {
  if (testing::sanitized) GTEST_SKIP() << "a sanitizer's own memory does not fit into the group";
  const testing::TemporaryFolder folder(testing::buildFolder());
  if (!testing::isOnDisk(folder.path())) GTEST_SKIP() << folder.path() << " is on no disk";
  const MemoryGroupFolder group;
  if (!group) GTEST_SKIP() << group.whyNot();
  const auto file = folder.path("cached");
  if (!testing::writeToDisk(file, fileMebibytes)) GTEST_SKIP() << "no room for 1 GiB on the disk";
  dropCacheOf(file);
  const auto killsBefore = group.kills();

  std::string printed;
  const int status = runHelper(group.path(), file, printed);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status << " " << printed;
  EXPECT_EQ(group.kills(), killsBefore);

  const auto before = leadingNumber(printed);
  ASSERT_TRUE(before) << printed;
  ASSERT_GE(*before, 900 * mebibyte) << "the file was not charged to the group";
  EXPECT_LE(cacheOf(group.path()) + 200 * mebibyte, *before);
  RecordProperty("cacheBefore", std::to_string(*before));
  RecordProperty("cacheAfter", std::to_string(cacheOf(group.path())));
}

}  // namespace

int testing::runCleanerHelper(const char* groupFolder, const char* file) {
  const std::string group(groupFolder);
  if (!write(group + "/cgroup.procs", std::to_string(::getpid()))) return 2;
  const int opened = ::open(file, O_RDONLY | O_CLOEXEC);
  std::vector<char> piece(mebibyte);
  while (::read(opened, piece.data(), piece.size()) > 0) {
  }
  ::close(opened);
  const auto before = std::to_string(cacheOf(group)) + "\n";
  if (::write(STDOUT_FILENO, before.data(), before.size()) < 0) return 3;
  std::int32_t stop = 0;
  return clear_memory(nullptr, 0, &stop);
}

}  // namespace vantile
