#pragma once

#include <unistd.h>

#include <utility>

namespace vantile {

/// Owns a file descriptor; -1 for none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }

  int get() const { return fd_; }
  /// Gives the descriptor up, to be closed by somebody else.
  int release() { return std::exchange(fd_, -1); }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

}  // namespace vantile
