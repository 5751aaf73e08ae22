// Local sockets: a connection goes where a test says, by the address of Linux.

#include <sys/socket.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "fakes/counters.h"

using fakes::machine;

#undef connect
#undef setsockopt

extern "C" {

int fake_setsockopt(int socket, int level, int option, const void* value, socklen_t size) {
  int on = 0;
  if (socket < 0 || level != SOL_SOCKET || option != SO_NOSIGPIPE || size != sizeof on)
    std::abort();
  std::memcpy(&on, value, sizeof on);
  if (on != 1) std::abort();
  return machine.refusesSocketOption ? (errno = EINVAL, -1) : 0;
}

int fake_connect(int socket, const struct sockaddr* address, socklen_t size) {
  machine.socketAddresses.emplace_back(reinterpret_cast<const char*>(address), size);
  char there[110] = {AF_UNIX, 0};  // of Linux's form
  std::memcpy(there + 2, machine.socketPath.data(), machine.socketPath.size());
  return ::connect(socket, reinterpret_cast<const struct sockaddr*>(there), sizeof there);
}

}  // extern "C"
