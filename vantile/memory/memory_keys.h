#pragma once

#include "vantile/foundation/value.h"

/// The keys of the dictionaries that `KVDMemory` reports.
namespace vantile::keys {

// Memory, bytes, unsigned 64-bit. Inactive memory counts as free, compressed memory as used.
inline constexpr Key memory_total{"memory_total"};  ///< sum of the counts, not the installed RAM
inline constexpr Key memory_free{"memory_free"};    ///< free and inactive
inline constexpr Key memory_used{"memory_used"};    ///< wired, active and compressed
inline constexpr Key memory_active{"memory_active"};
inline constexpr Key memory_inactive{"memory_inactive"};
inline constexpr Key memory_wired{"memory_wired"};
inline constexpr Key memory_freepage{"memory_freepage"};          ///< truly free
inline constexpr Key memory_compressed{"memory_compressed"};      ///< what the compressor occupies
inline constexpr Key memory_uncompressed{"memory_uncompressed"};  ///< what it holds

// Paging, unsigned 64-bit: counts, not bytes; since boot but where something else is said. Left out
// where the system keeps none.
inline constexpr Key vm_hits{"vm_hits"};        ///< of the page cache; absent on Linux
inline constexpr Key vm_lookups{"vm_lookups"};  ///< of the page cache; absent on Linux
inline constexpr Key vm_pageins{"vm_pageins"};
inline constexpr Key vm_pageouts{"vm_pageouts"};
inline constexpr Key vm_faults{"vm_faults"};
inline constexpr Key vm_cowfaults{"vm_cowfaults"};  ///< absent on Linux
inline constexpr Key vm_purges{"vm_purges"};
inline constexpr Key vm_purgeablecount{"vm_purgeablecount"};      ///< pages now, not since boot
inline constexpr Key vm_speculativecount{"vm_speculativecount"};  ///< pages now; absent on Linux
inline constexpr Key vm_decompressions{"vm_decompressions"};
inline constexpr Key vm_compressions{"vm_compressions"};
inline constexpr Key vm_deltapageins{"vm_deltapageins"};    ///< since the sample before, see below
inline constexpr Key vm_deltapageouts{"vm_deltapageouts"};  ///< since the sample before, see below
// A monitor's first sample has none before it: its deltas are the whole counters. So are those of a
// counter that went backwards, which was reset.

// Swap.
/// Text: the folder of the swap files. Where there is no file to tell, "/private/var/vm/".
inline constexpr Key swap_path{"swap_path"};
inline constexpr Key swap_count{"swap_count"};          ///< unsigned 32-bit: swap files now
inline constexpr Key swap_countpeak{"swap_countpeak"};  ///< unsigned 32-bit: most seen so far
inline constexpr Key swap_size{"swap_size"};            ///< unsigned 64-bit: bytes of all of them
inline constexpr Key swap_used{"swap_used"};  ///< unsigned 64-bit: bytes in use, 0 unknown
inline constexpr Key swap_encrypted{"swap_encrypted"};  ///< boolean: false when unknown

}  // namespace vantile::keys
