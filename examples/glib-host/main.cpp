// A host that runs GLib's main loop, as GTK programs do: the library's descriptor becomes one of
// its sources. Prints the machine's memory as often as its argument says.

#include <glib-unix.h>
#include <vantile/foundation/run_loop.h>
#include <vantile/memory/memory.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

gboolean serveLibrary(gint, GIOCondition, gpointer) {
  vantile::RunLoop::current().dispatch();
  return G_SOURCE_CONTINUE;
}

}  // namespace

int main(int argc, char** argv) {
  int left = argc > 1 ? std::atoi(argv[1]) : 10;
  const std::unique_ptr<GMainLoop, void (*)(GMainLoop*)> loop(g_main_loop_new(nullptr, FALSE),
                                                              g_main_loop_unref);

  const auto memory = vantile::KVDMemory::singleton();
  if (!memory) {
    std::fputs("this system gives no memory statistics\n", stderr);
    return 1;
  }
  const auto delegate = std::make_shared<vantile::MemoryDelegate>();
  delegate->updateMemoryStatusWithVMStatusWithSwapDict = [&](const vantile::Dictionary& figures,
                                                             const vantile::Dictionary&,
                                                             const vantile::Dictionary*) {
    const auto used = figures.uint64(vantile::keys::memory_used).value_or(0);
    const auto total = figures.uint64(vantile::keys::memory_total).value_or(0);
    std::printf("%" PRIu64 " MiB of %" PRIu64 " MiB used\n", used >> 20, total >> 20);
    if (--left <= 0) g_main_loop_quit(loop.get());
  };
  memory->setDelegate(delegate);

  // On the thread that runs the loop. Delegates are called there, so they may touch widgets.
  const guint source =
      g_unix_fd_add(vantile::RunLoop::current().fd(), G_IO_IN, serveLibrary, nullptr);
  g_main_loop_run(loop.get());
  g_source_remove(source);
  memory->setDelegate(nullptr);  // the monitor lives on, what the delegate refers to does not
}
