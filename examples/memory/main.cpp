// The smallest host: prints the machine's memory once a second, as often as its argument says.

#include <vantile/foundation/run_loop.h>
#include <vantile/memory/memory.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>

int main(int argc, char** argv) {
  int left = argc > 1 ? std::atoi(argv[1]) : 10;
  auto& loop = vantile::RunLoop::current();

  // The shared monitor samples every second on the run loop of the thread that asks for it first.
  const auto memory = vantile::KVDMemory::singleton();
  if (!memory) {
    std::fputs("this system gives no memory statistics\n", stderr);
    return 1;
  }

  // Members of a delegate that are left empty are not called.
  const auto delegate = std::make_shared<vantile::MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict = [&](const vantile::Dictionary& figures,
                                                             const vantile::Dictionary&,
                                                             const vantile::Dictionary*) {
    const auto used = figures.uint64(vantile::keys::memory_used).value_or(0);
    const auto total = figures.uint64(vantile::keys::memory_total).value_or(0);
    std::printf("%" PRIu64 " MiB of %" PRIu64 " MiB used\n", used >> 20, total >> 20);
    if (--left <= 0) loop.stop();
  };
  memory->setDelegate(delegate);
  loop.run();
  memory->setDelegate(nullptr);  // the monitor lives on, what the delegate refers to does not
}
