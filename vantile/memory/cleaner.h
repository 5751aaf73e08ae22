#pragma once

#include <cstdint>

#include "vantile/foundation/api.h"

/// The memory cleaner: functions of C linkage, for C++, that put the system under memory pressure,
/// so that it gives up caches and pages out what nobody uses, and then give all of it back.
/// `KVDMemory::clearMemory` runs them in the background. None of them throws.
///
/// A stop flag is the caller's own; 1 asks the work to stop. It may be set, atomically, from any
/// thread, is read at every step and never written; a null flag never stops.

extern "C" {

/// Six byte counts of physical memory.
struct memory_info {
  std::uint64_t total, free, used, active, wired, inactive;
};

/// A link of a chain of blocks. The head carries no block.
struct memory_node {
  void* data;
  memory_node* next;
};

/// Called at the end of a cleaning run, on its thread; its result is the run's.
typedef int (*memory_cleaned)(void);

/// Nonzero asks the run in progress to stop. A run sets it to its caller's flag at the start, the
/// alarm sets it to 1. One a process. Access it atomically.
VANTILE_API extern std::int32_t stopClearMemory;

/// Takes and gives back memory, pass after pass, until ten seconds are over or `*stop` is 1, waits
/// a second, and calls `done`, which may be null. The ten seconds are a SIGALRM of the process's
/// interval timer: a handler and an alarm of the host's own are replaced and not restored, and
/// after an early stop the alarm still fires. The signal may interrupt any thread of the host that
/// does not block it, whose calls are taken up again where the system can.
/// `mode` 1 takes small blocks only; any other mode also takes as much memory as is free.
/// The result is that of `done`, or that of the pause, the seconds left of it, without one. Blocks
/// the calling thread, which takes SIGALRM meanwhile.
VANTILE_API int clear_memory(memory_cleaned done, std::uint32_t mode, std::int32_t* stop) noexcept;

/// One pass's worth of blocks: the head of a new chain, for `auto_free`, or null when there is no
/// memory for it.
VANTILE_API memory_node* auto_calloc(std::int32_t* stop, std::uint32_t mode) noexcept;

/// Gives back a chain and its blocks. Null does nothing.
VANTILE_API void auto_free(memory_node* head) noexcept;

/// Appends `count` + 1 blocks of `size` bytes after `node`, each byte 1, and one at least; fewer
/// where memory runs out or `*stop` is 1, none for a negative `size`. The chain's last node; null
/// for a null `node`.
VANTILE_API memory_node* add_memory_block(memory_node* node, std::int32_t size, std::int32_t count,
                                          std::int32_t* stop) noexcept;

/// Appends a chunk of 256 MiB for each that is free, and one more, and writes all of it;
/// fewer where the platform refuses a chunk. The chain's last node; null for a null `last`.
VANTILE_API memory_node* add_memory_block_ex(memory_node* last) noexcept;

/// Fills `*record` with the present byte counts. Inactive memory counts as used here. 0; -1 for a
/// null record or when the system does not tell.
VANTILE_API int get_memory_info(memory_info* record) noexcept;

/// Arms the ten-second alarm, or disarms it. 0, or -1 when the system refuses.
VANTILE_API int int_timer(void) noexcept;
VANTILE_API int uninit_time(void) noexcept;

/// Handles SIGALRM: sets `stopClearMemory` to 1 and does nothing else.
VANTILE_API void signal_handler(int signal) noexcept;

/// The completion that `KVDMemory::clearMemory` hands to the cleaner: tells the delegate of the
/// shared `KVDMemory`. Always 0.
VANTILE_API int cleanmemorycomplete(void) noexcept;

}  // extern "C"
