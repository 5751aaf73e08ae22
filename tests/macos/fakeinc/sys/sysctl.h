#pragma once

#include <stddef.h>
#include <stdint.h>

#define CTL_VM 2
#define VM_SWAPUSAGE 5
#define CTL_NET 4
#define CTL_HW 6
#define HW_NCPU 3
#define HW_CPU_FREQ 15

struct xsw_usage {
  uint64_t xsu_total, xsu_avail, xsu_used;
  uint32_t xsu_pagesize;
  int xsu_encrypted;
};

#ifdef __cplusplus
extern "C" {
#endif
int sysctl(int* name, unsigned int depth, void* old, size_t* oldSize, void* value, size_t size);
int sysctlbyname(const char* name, void* old, size_t* oldSize, void* value, size_t size);
#ifdef __cplusplus
}
#endif
