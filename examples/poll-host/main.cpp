// A host with a loop of its own: it polls the library's descriptor beside its others and serves
// the library when that is readable. Prints the machine's memory as often as its argument says.

#include <poll.h>
#include <unistd.h>
#include <vantile/foundation/run_loop.h>
#include <vantile/memory/memory.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>

int main(int argc, char** argv) {
  int left = argc > 1 ? std::atoi(argv[1]) : 10;

  const auto memory = vantile::KVDMemory::singleton();
  if (!memory) {
    std::fputs("this system gives no memory statistics\n", stderr);
    return 1;
  }
  const auto delegate = std::make_shared<vantile::MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict = [&left](const vantile::Dictionary& figures,
                                                                 const vantile::Dictionary&,
                                                                 const vantile::Dictionary*) {
    const auto used = figures.uint64(vantile::keys::memory_used).value_or(0);
    const auto total = figures.uint64(vantile::keys::memory_total).value_or(0);
    std::printf("%" PRIu64 " MiB of %" PRIu64 " MiB used\n", used >> 20, total >> 20);
    --left;
  };
  memory->setDelegate(delegate);

  // The library's loop belongs to the thread that polls. There is no time-out to work out: the
  // descriptor becomes readable when a timer is due, too.
  auto& library = vantile::RunLoop::current();
  while (left > 0) {
    pollfd polled[] = {{library.fd(), POLLIN, 0}};  // and whatever else the host waits for
    if (poll(polled, 1, -1) < 0) {
      if (errno == EINTR) continue;
      std::perror("poll");
      return 1;
    }
    if (polled[0].revents != 0) library.dispatch();
  }
  memory->setDelegate(nullptr);  // the monitor lives on, what the delegate refers to does not
}
