#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int kern_return_t;
typedef int integer_t;
typedef unsigned int natural_t;
typedef natural_t mach_port_t;
typedef mach_port_t host_t;
typedef mach_port_t ipc_space_t;
typedef natural_t mach_msg_type_number_t;
typedef integer_t host_flavor_t;
typedef integer_t* host_info_t;
typedef integer_t* host_info64_t;
typedef uintptr_t vm_size_t;
typedef uintptr_t vm_address_t;
typedef mach_port_t task_port_t;
typedef mach_port_t vm_map_t;
typedef mach_port_t processor_set_name_t;
typedef int processor_flavor_t;
typedef int processor_set_flavor_t;
typedef integer_t* processor_info_array_t;
typedef integer_t* processor_set_info_t;

#define KERN_SUCCESS 0
#define MACH_PORT_NULL 0
#define HOST_VM_INFO 2
#define HOST_VM_INFO64 4

typedef struct vm_statistics {
  natural_t free_count, active_count, inactive_count, wire_count;
  natural_t zero_fill_count, reactivations, pageins, pageouts, faults, cow_faults, lookups, hits;
  natural_t purgeable_count, purges;
  natural_t speculative_count;
} vm_statistics_data_t;

typedef struct vm_statistics64 {
  natural_t free_count, active_count, inactive_count, wire_count;
  uint64_t zero_fill_count, reactivations, pageins, pageouts, faults, cow_faults, lookups, hits,
      purges;
  natural_t purgeable_count, speculative_count;
  uint64_t decompressions, compressions, swapins, swapouts;
  natural_t compressor_page_count, throttled_count, external_page_count, internal_page_count;
  uint64_t total_uncompressed_pages_in_compressor;
} __attribute__((aligned(8))) vm_statistics64_data_t;

#define PROCESSOR_CPU_LOAD_INFO 2
#define CPU_STATE_USER 0
#define CPU_STATE_SYSTEM 1
#define CPU_STATE_IDLE 2
#define CPU_STATE_NICE 3
#define CPU_STATE_MAX 4
#define PROCESSOR_SET_LOAD_INFO 4

typedef struct processor_set_load_info {
  int task_count, thread_count;
  integer_t load_average, mach_factor;
} processor_set_load_info_data_t;

#define PROCESSOR_SET_LOAD_INFO_COUNT \
  ((mach_msg_type_number_t)(sizeof(processor_set_load_info_data_t) / sizeof(natural_t)))
#define HOST_VM_INFO_COUNT \
  ((mach_msg_type_number_t)(sizeof(vm_statistics_data_t) / sizeof(integer_t)))
#define HOST_VM_INFO64_COUNT \
  ((mach_msg_type_number_t)(sizeof(vm_statistics64_data_t) / sizeof(integer_t)))

extern vm_size_t vm_page_size;
extern mach_port_t mach_task_self_;
#define mach_task_self() mach_task_self_

mach_port_t mach_host_self(void);
kern_return_t mach_port_deallocate(ipc_space_t task, mach_port_t name);
kern_return_t host_statistics(host_t host, host_flavor_t flavor, host_info_t info,
                              mach_msg_type_number_t* words);
kern_return_t host_statistics64(host_t host, host_flavor_t flavor, host_info64_t info,
                                mach_msg_type_number_t* words);
kern_return_t host_processor_info(host_t host, processor_flavor_t flavor, natural_t* processors,
                                  processor_info_array_t* info, mach_msg_type_number_t* words);
kern_return_t processor_set_default(host_t host, processor_set_name_t* set);
kern_return_t processor_set_statistics(processor_set_name_t set, processor_set_flavor_t flavor,
                                       processor_set_info_t info, mach_msg_type_number_t* words);
kern_return_t vm_deallocate(vm_map_t task, vm_address_t address, vm_size_t size);

#ifdef __cplusplus
}
#endif
