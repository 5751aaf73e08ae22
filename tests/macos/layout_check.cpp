// Facts about the system's records and constants that the adapters and their tests rely on.
// Compiled against the system's own headers in the macOS build and against the stand-ins for the
// seam tests: what holds in one and not in the other builds in only one.

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>
#include <IOKit/IOKitLib.h>
#include <MacTypes.h>
#include <dispatch/dispatch.h>
#include <fcntl.h>
#include <mach/mach.h>
#include <net/if.h>
#include <net/if_dl.h>
#include <net/route.h>
#include <objc/runtime.h>
#include <spawn.h>
#include <sys/event.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysctl.h>
#include <sys/un.h>
#include <time.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

static_assert(sizeof(kern_return_t) == 4 && sizeof(natural_t) == 4 && sizeof(integer_t) == 4);
static_assert(std::is_same_v<mach_port_t, std::uint32_t>);
static_assert(sizeof(mach_msg_type_number_t) == 4 && sizeof(vm_size_t) == 8);
static_assert(KERN_SUCCESS == 0 && MACH_PORT_NULL == 0);
static_assert(HOST_VM_INFO == 2 && HOST_VM_INFO_COUNT == 15);
static_assert(HOST_VM_INFO64 == 4 && HOST_VM_INFO64_COUNT == 38);

static_assert(PROCESSOR_CPU_LOAD_INFO == 2 && CPU_STATE_MAX == 4);
static_assert(CPU_STATE_USER == 0 && CPU_STATE_SYSTEM == 1 && CPU_STATE_IDLE == 2);
static_assert(CPU_STATE_NICE == 3 && sizeof(vm_address_t) == 8);
static_assert(PROCESSOR_SET_LOAD_INFO == 4 && PROCESSOR_SET_LOAD_INFO_COUNT == 4);
static_assert(offsetof(processor_set_load_info, task_count) == 0);
static_assert(offsetof(processor_set_load_info, thread_count) == 4);
static_assert(CTL_HW == 6 && HW_NCPU == 3 && HW_CPU_FREQ == 15);
static_assert(sizeof(io_object_t) == 4 && sizeof(task_port_t) == 4);

static_assert(offsetof(vm_statistics, free_count) == 0);
static_assert(offsetof(vm_statistics, active_count) == 4);
static_assert(offsetof(vm_statistics, inactive_count) == 8);
static_assert(offsetof(vm_statistics, wire_count) == 12);
static_assert(offsetof(vm_statistics, pageins) == 24);
static_assert(offsetof(vm_statistics, pageouts) == 28);
static_assert(offsetof(vm_statistics, faults) == 32);
static_assert(offsetof(vm_statistics, cow_faults) == 36);
static_assert(offsetof(vm_statistics, lookups) == 40);
static_assert(offsetof(vm_statistics, hits) == 44);

static_assert(sizeof(vm_statistics64_data_t) == 152);
static_assert(offsetof(vm_statistics64, free_count) == 0);
static_assert(offsetof(vm_statistics64, active_count) == 4);
static_assert(offsetof(vm_statistics64, inactive_count) == 8);
static_assert(offsetof(vm_statistics64, wire_count) == 12);
static_assert(offsetof(vm_statistics64, pageins) == 32);
static_assert(offsetof(vm_statistics64, pageouts) == 40);
static_assert(offsetof(vm_statistics64, faults) == 48);
static_assert(offsetof(vm_statistics64, cow_faults) == 56);
static_assert(offsetof(vm_statistics64, lookups) == 64);
static_assert(offsetof(vm_statistics64, hits) == 72);
static_assert(offsetof(vm_statistics64, purges) == 80);
static_assert(offsetof(vm_statistics64, purgeable_count) == 88);
static_assert(offsetof(vm_statistics64, speculative_count) == 92);
static_assert(offsetof(vm_statistics64, decompressions) == 96);
static_assert(offsetof(vm_statistics64, compressions) == 104);
static_assert(offsetof(vm_statistics64, compressor_page_count) == 128);
static_assert(offsetof(vm_statistics64, total_uncompressed_pages_in_compressor) == 144);

static_assert(CTL_VM == 2 && VM_SWAPUSAGE == 5);
static_assert(sizeof(xsw_usage) == 32);
static_assert(offsetof(xsw_usage, xsu_used) == 16 && offsetof(xsw_usage, xsu_encrypted) == 28);

// `struct stat`, which the stand-in has as a macro.
using FileStatus = struct stat;
static_assert(sizeof(FileStatus) == 144);
static_assert(offsetof(FileStatus, st_mode) == 4 && offsetof(FileStatus, st_nlink) == 6);
static_assert(offsetof(FileStatus, st_ino) == 8 && offsetof(FileStatus, st_uid) == 16);
static_assert(offsetof(FileStatus, st_mtimespec) == 48);
static_assert(offsetof(FileStatus, st_birthtimespec) == 80);
static_assert(offsetof(FileStatus, st_size) == 96);
static_assert(sizeof(FileStatus::st_dev) == 4 && sizeof(FileStatus::st_mode) == 2);
static_assert(S_IFMT == 0170000 && S_IFREG == 0100000 && S_IFDIR == 0040000 && S_IFLNK == 0120000);

// `struct kevent`, beside a function of that name.
using KernelEvent = struct kevent;
static_assert(sizeof(KernelEvent) == 32 && alignof(KernelEvent) == 4);
static_assert(offsetof(KernelEvent, ident) == 0 && sizeof(KernelEvent::ident) == 8);
static_assert(offsetof(KernelEvent, filter) == 8 && sizeof(KernelEvent::filter) == 2);
static_assert(offsetof(KernelEvent, flags) == 10 && sizeof(KernelEvent::flags) == 2);
static_assert(offsetof(KernelEvent, fflags) == 12 && sizeof(KernelEvent::fflags) == 4);
static_assert(offsetof(KernelEvent, data) == 16 && offsetof(KernelEvent, udata) == 24);
static_assert(EVFILT_VNODE == -4 && EVFILT_USER == -10);
static_assert(EV_ADD == 0x1 && EV_ENABLE == 0x4 && EV_CLEAR == 0x20);
static_assert(NOTE_DELETE == 0x1 && NOTE_WRITE == 0x2 && NOTE_EXTEND == 0x4);
static_assert(NOTE_ATTRIB == 0x8 && NOTE_LINK == 0x10 && NOTE_RENAME == 0x20);
static_assert(NOTE_REVOKE == 0x40 && NOTE_TRIGGER == 0x01000000);
static_assert(O_EVTONLY == 0x8000);

static_assert(std::is_pointer_v<id> && std::is_pointer_v<Class> && std::is_pointer_v<SEL>);

static_assert(DISPATCH_TIME_NOW == 0 && std::is_same_v<dispatch_time_t, std::uint64_t>);
static_assert(POSIX_SPAWN_CLOEXEC_DEFAULT == 0x4000 && POSIX_SPAWN_SETSIGMASK == 0x0008);
static_assert(sizeof(clock_gettime_nsec_np(CLOCK_UPTIME_RAW)) == 8);
static_assert(sizeof(Boolean) == 1 && sizeof(UInt8) == 1 && sizeof(SInt32) == 4);
static_assert(sizeof(UInt32) == 4 && sizeof(SInt64) == 8);
static_assert(sizeof(CFRunLoopSourceContext) == 80 && sizeof(CFRunLoopTimerContext) == 40);

static_assert(MNT_WAIT == 1 && sizeof(struct statfs) == 2168);
static_assert(offsetof(struct statfs, f_bsize) == 0 && offsetof(struct statfs, f_blocks) == 8);
static_assert(offsetof(struct statfs, f_bavail) == 24);
static_assert(offsetof(struct statfs, f_fstypename) == 72);
static_assert(offsetof(struct statfs, f_mntonname) == 88);
static_assert(offsetof(struct statfs, f_mntfromname) == 1112);
static_assert(sizeof(UniChar) == 2 && sizeof(SInt16) == 2 && sizeof(UInt64) == 8);
static_assert(sizeof(FSRef) == 80 && sizeof(HFSUniStr255) == 512);
static_assert(offsetof(FSCatalogInfo, volume) == 2);

// What the parser of routing messages has as numbers of its own.
static_assert(CTL_NET == 4 && PF_ROUTE == 17 && NET_RT_IFLIST == 3);
static_assert(RTM_IFINFO == 14 && AF_LINK == 18 && IFF_UP == 0x1 && IFF_LOOPBACK == 0x8);
static_assert(sizeof(if_msghdr) == 112 && offsetof(if_msghdr, ifm_msglen) == 0);
static_assert(offsetof(if_msghdr, ifm_type) == 3 && offsetof(if_msghdr, ifm_flags) == 8);
static_assert(offsetof(if_msghdr, ifm_index) == 12);
static_assert(offsetof(if_msghdr, ifm_data.ifi_ibytes) == 56);
static_assert(offsetof(if_msghdr, ifm_data.ifi_obytes) == 60);
static_assert(offsetof(sockaddr_dl, sdl_family) == 1 && offsetof(sockaddr_dl, sdl_nlen) == 5);
static_assert(offsetof(sockaddr_dl, sdl_data) == 8);

static_assert(sizeof(sockaddr_un) == 106 && offsetof(sockaddr_un, sun_path) == 2);
static_assert(AF_UNIX == 1 && SO_NOSIGPIPE == 0x1022);
