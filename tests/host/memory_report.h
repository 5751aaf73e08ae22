#pragma once

#include <vantile/foundation/value.h>
#include <vantile/memory/memory_keys.h>

#include <cstdint>

#include "report.h"

namespace vantile::host {

/// A report of a machine of 16 GiB as the memory monitor makes it, with the counts to vary.
struct MemoryReport {
  std::uint64_t pageIns = 1000, pageOuts = 500;
  std::uint64_t deltaIns = 1000, deltaOuts = 500;
  std::uint64_t swapUsed = 1u << 30;
  bool withSwap = true;

  Report report() const {
    constexpr std::uint64_t gib = 1u << 30;
    Dictionary memory;
    memory.set(keys::memory_total, 16 * gib);
    memory.set(keys::memory_free, 8 * gib);
    memory.set(keys::memory_used, 8 * gib);
    memory.set(keys::memory_active, 4 * gib);
    memory.set(keys::memory_inactive, 6 * gib);
    memory.set(keys::memory_wired, 3 * gib);
    memory.set(keys::memory_freepage, 2 * gib);
    memory.set(keys::memory_compressed, gib);
    memory.set(keys::memory_uncompressed, 3 * gib);
    Dictionary vm;
    vm.set(keys::vm_pageins, pageIns);
    vm.set(keys::vm_pageouts, pageOuts);
    vm.set(keys::vm_deltapageins, deltaIns);
    vm.set(keys::vm_deltapageouts, deltaOuts);
    Dictionary swap;
    swap.set(keys::swap_path, "/var/swap/");
    swap.set(keys::swap_count, std::uint32_t{2});
    swap.set(keys::swap_countpeak, std::uint32_t{2});
    swap.set(keys::swap_size, 4 * gib);
    swap.set(keys::swap_used, swapUsed);
    swap.set(keys::swap_encrypted, true);
    return {"memory",
            "updateMemoryStatusWithVMStatusWithSwapDict",
            {argument(&memory), argument(&vm), argument(withSwap ? &swap : nullptr)}};
  }
};

}  // namespace vantile::host
