#pragma once

#include <fcntl.h>
#include <linux/fuse.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>
#include <utility>

namespace vantile::testing {

/// Serves an empty file system that tells its size, or leaves whoever asks for it waiting.
class FuseServer {
 public:
  FuseServer() = default;
  ~FuseServer() { end(); }
  FuseServer(const FuseServer&) = delete;
  FuseServer& operator=(const FuseServer&) = delete;

  /// Mounts it as type "fuseblk"; why not, where the system refuses.
  std::string mountAt(const std::string& device, const std::string& folder) {
    channel_ = ::open("/dev/fuse", O_RDWR | O_CLOEXEC | O_NONBLOCK);
    if (channel_ < 0) return std::string("/dev/fuse: ") + std::strerror(errno);
    const auto options = "fd=" + std::to_string(channel_) + ",rootmode=40000,user_id=0,group_id=0";
    if (::mount(device.c_str(), folder.c_str(), "fuseblk", 0, options.c_str()) != 0)
      return std::string("mount: ") + std::strerror(errno);
    folder_ = folder;
    thread_ = std::thread([this] { serve(); });
    return {};
  }

  /// Leaves what it served mounted, as a server does that crashed.
  void die() {
    stops_ = true;
    if (thread_.joinable()) thread_.join();
    if (channel_ >= 0) ::close(channel_);
    channel_ = -1;
  }

  /// Ends the connection first: the kernel would wait for an answer to its farewell.
  void end() {
    die();
    if (!folder_.empty()) ::umount2(folder_.c_str(), MNT_DETACH);
    folder_.clear();
  }

  std::atomic<bool> answers = true;           ///< what it is asked for its size
  std::atomic<bool> tellsSizeAlone = false;   ///< and leaves everybody else waiting
  std::atomic<std::uint64_t> available = 40;  ///< blocks of 512 bytes, of 100
  std::atomic<int> asked = 0;                 ///< for its size

 private:
  void serve() {
    std::array<char, FUSE_MIN_READ_BUFFER + 4096> buffer;
    std::uint64_t waiting = 0;
    while (!stops_) {
      pollfd channel = {.fd = channel_, .events = POLLIN, .revents = 0};
      ::poll(&channel, 1, 5);
      if (waiting && answers) tellSize(std::exchange(waiting, 0));
      const auto size = ::read(channel_, buffer.data(), buffer.size());
      fuse_in_header request = {};
      if (size < static_cast<ssize_t>(sizeof request)) continue;
      std::memcpy(&request, buffer.data(), sizeof request);
      if (request.opcode == FUSE_STATFS) {
        ++asked;
        waiting = request.unique;
        if (answers) tellSize(std::exchange(waiting, 0));
      } else if (!tellsSizeAlone || request.opcode == FUSE_INIT) {
        answer(request);
      }
    }
  }

  void answer(const fuse_in_header& request) {
    if (request.opcode == FUSE_INIT) {
      fuse_init_out told = {};
      told.major = FUSE_KERNEL_VERSION;
      told.minor = FUSE_KERNEL_MINOR_VERSION;
      told.max_write = 4096;
      reply(request.unique, 0, &told, sizeof told);
    } else if (request.opcode == FUSE_GETATTR) {
      fuse_attr_out told = {};
      told.attr.ino = 1;
      told.attr.mode = S_IFDIR | 0755;
      told.attr.nlink = 2;
      reply(request.unique, 0, &told, sizeof told);
    } else if (request.opcode != FUSE_FORGET && request.opcode != FUSE_INTERRUPT) {
      reply(request.unique, request.opcode == FUSE_DESTROY ? 0 : -ENOSYS, nullptr, 0);
    }
  }

  void tellSize(std::uint64_t to) {
    fuse_statfs_out told = {};
    told.st.blocks = 100;
    told.st.bfree = told.st.bavail = available;
    told.st.bsize = told.st.frsize = 512;
    reply(to, 0, &told, sizeof told);
  }

  void reply(std::uint64_t to, int error, const void* told, std::size_t size) {
    std::array<char, 512> buffer;
    const fuse_out_header header = {static_cast<std::uint32_t>(sizeof header + size), error, to};
    std::memcpy(buffer.data(), &header, sizeof header);
    if (size > 0) std::memcpy(buffer.data() + sizeof header, told, size);
    static_cast<void>(!::write(channel_, buffer.data(), sizeof header + size));
  }

  int channel_ = -1;
  std::string folder_;
  std::atomic<bool> stops_ = false;
  std::thread thread_;
};

}  // namespace vantile::testing
