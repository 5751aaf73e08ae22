// A host outside the project, which happens to have a function of one of the
// library's names.

#include <vantile/foundation/queue.h>
#include <vantile/memory/cleaner.h>
#include <vantile/memory/memory.h>
#include <vantile/utility/folder_functions.h>
#include <vantile/utility/general_utility.h>
#include <vantile/utility/strings.h>

#include <csignal>
#include <cstdio>

extern "C" void signal_handler(int) noexcept {
  std::puts("the host's own");
}

namespace {

/// The library's calls to its own functions must not end up in the host's of the same names.
bool libraryUsesItsOwn() {
  std::int32_t stop = 1;
  clear_memory(nullptr, 1, &stop);
  const auto handler = std::signal(SIGALRM, SIG_IGN);
  return handler != SIG_DFL && handler != SIG_ERR && handler != &signal_handler;
}

bool samples() {
  bool sampled = false;
  const auto delegate = std::make_shared<vantile::MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict = [&](const vantile::Dictionary& memory,
                                                             const vantile::Dictionary&,
                                                             const vantile::Dictionary* swap) {
    sampled = memory.uint64(vantile::keys::memory_total).value_or(0) > 0 && swap;
    vantile::RunLoop::current().stop();
  };
  const auto monitor = vantile::KVDMemory::singleton();
  if (!monitor) return false;
  monitor->setDelegate(delegate);
  vantile::RunLoop::current().run();
  return sampled;
}

}  // namespace

int main() {
  if (!samples()) return std::puts("no sample came"), 1;
  if (!libraryUsesItsOwn()) return std::puts("the host's function was called"), 1;
  if (vantile::GeneralUtility::userHomePath().empty()) return std::puts("no home"), 1;
  if (get_folder_size(".") == 0) return std::puts("an empty folder"), 1;
  if (!vantile::isLessThanOrEqual("10.8", "10.10")) return std::puts("versions"), 1;
  std::puts("ok");
}
