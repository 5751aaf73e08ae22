#include "vantile/memory/cleaner.h"

#include <atomic>
#include <cstring>
#include <mutex>

#include "vantile/foundation/guard.h"
#include "vantile/foundation/stop_flag.h"
#include "vantile/memory/memory_ports.h"

std::int32_t stopClearMemory = 0;

namespace vantile {
namespace {

constexpr std::int32_t smallBlock = 1024;
constexpr std::size_t largeChunk = 256u << 20;
constexpr unsigned largeChunkShift = 28;  // the same as a power of two
constexpr std::size_t fillStep = 1024;
constexpr unsigned settlePause = 1;      // seconds
constexpr std::int64_t alarmDelay = 10;  // seconds
constexpr unsigned lowReadings = 10;     // with no memory left, before growth ends

// The setting that every change of the alarm replaced. It is taken and never put back.
IntervalTimerSetting oldtv;
std::mutex oldtvLock;

PressureMemory& pressure() {
  return *MemoryPorts::installed().pressure;
}
IntervalAlarm& intervalTimer() {
  return *MemoryPorts::installed().alarm;
}

static_assert(std::atomic_ref<std::int32_t>::is_always_lock_free, "set by a signal handler");
std::atomic_ref<std::int32_t> stopRequested() {
  return std::atomic_ref(stopClearMemory);
}

bool callerStops(std::int32_t* stop) {
  return readStopFlag(stop) == 1;
}

memory_node* newNode() {
  return static_cast<memory_node*>(pressure().zeroed(sizeof(memory_node)));
}

/// Links `node`, which takes over `block`, after `last`.
memory_node* link(memory_node* last, memory_node* node, void* block) {
  node->data = block;
  last->next = node;
  return node;
}

/// Links a new node that takes over `block` after `last`. Null, the block given back, when there is
/// no memory for the node.
memory_node* append(memory_node* last, void* block) {
  if (memory_node* const node = newNode()) return link(last, node, block);
  pressure().release(block);
  return nullptr;
}

std::uint64_t freeBytes() {
  memory_info info = {};
  get_memory_info(&info);
  return info.free;
}

void fill(void* chunk) {
  auto* const bytes = static_cast<unsigned char*>(chunk);
  for (std::size_t at = 0; at < largeChunk; at += fillStep) std::memset(bytes + at, 1, fillStep);
}

memory_node* appendChunks(memory_node* last, std::uint64_t count) {
  unsigned low = 0;
  for (std::uint64_t pass = 0; pass <= count; ++pass) {
    void* const chunk = pressure().chunk(largeChunk);
    if (!chunk) return last;
    memory_node* const node = append(last, chunk);
    if (!node) return last;
    last = node;
    fill(chunk);
    if (freeBytes() < 10 && ++low > lowReadings) return last;
  }
  return last;
}

int setAlarm(std::int64_t seconds) {
  IntervalTimerSetting previous;
  const int result = intervalTimer().set({.valueSeconds = seconds}, previous);
  const std::lock_guard lock(oldtvLock);
  if (result == 0) oldtv = previous;
  return result;
}

void runPasses(std::uint32_t mode, std::int32_t* stop) {
  while (stopRequested() == 0) {
    auto_free(auto_calloc(stop, mode));
    if (callerStops(stop)) return;
  }
}

}  // namespace
}  // namespace vantile

using namespace vantile;

int clear_memory(memory_cleaned done, std::uint32_t mode, std::int32_t* stop) noexcept {
  int result = 0;
  guarded("a cleaning run", [&] {
    stopRequested() = readStopFlag(stop);
    intervalTimer().handle(signal_handler);
    int_timer();
    runPasses(mode, stop);
    result = static_cast<int>(intervalTimer().pause(settlePause));
    intervalTimer().leave();
    if (done) result = done();
  });
  return result;
}

memory_node* auto_calloc(std::int32_t* stop, std::uint32_t mode) noexcept {
  memory_node* const head = newNode();
  if (!head) return nullptr;
  if (mode == 1) {
    add_memory_block(head, smallBlock, 16, stop);
  } else {
    add_memory_block_ex(add_memory_block(head, smallBlock, 10, stop));
  }
  return head;
}

void auto_free(memory_node* head) noexcept {
  while (head) {
    memory_node* const next = head->next;
    pressure().release(head->data);
    pressure().release(head);
    head = next;
  }
}

memory_node* add_memory_block(memory_node* node, std::int32_t size, std::int32_t count,
                              std::int32_t* stop) noexcept {
  if (!node || size < 0) return node;
  const auto bytes = static_cast<std::size_t>(size);
  // The count begins below zero: one block more than asked for is appended, and always one.
  std::int64_t appended = -1;
  do {
    if (callerStops(stop)) return node;
    memory_node* const next = newNode();
    void* const block = next ? pressure().zeroed(bytes) : nullptr;
    if (!block) {
      pressure().release(next);
      return node;
    }
    std::memset(block, 1, bytes);
    node = link(node, next, block);
  } while (++appended < count);
  return node;
}

memory_node* add_memory_block_ex(memory_node* last) noexcept {
  if (!last) return nullptr;
  const auto count = freeBytes() >> largeChunkShift;
  // The slots stay empty; the table only takes part in the pressure.
  if (void* const table = pressure().zeroed((count + 1) * sizeof(void*))) {
    if (memory_node* const node = append(last, table)) last = node;
  }
  return count == 0 ? last : appendChunks(last, count);
}

int get_memory_info(memory_info* record) noexcept {
  if (!record) return -1;
  int result = -1;
  guarded("a memory reading", [&] {
    const auto& host = MemoryPorts::installed().host;
    const auto pages = host->pageCounts();
    if (!pages) return;
    const auto page = host->pageSize();
    // Sums are those of the 32-bit counts, which wrap; only then are they widened.
    const std::uint32_t used = pages->active + pages->inactive + pages->wired;
    const std::uint32_t total = pages->free + used;
    *record = {total * page,         pages->free * page,  used * page,
               pages->active * page, pages->wired * page, pages->inactive * page};
    result = 0;
  });
  return result;
}

int int_timer(void) noexcept {
  return setAlarm(alarmDelay);
}

int uninit_time(void) noexcept {
  return setAlarm(0);
}

void signal_handler(int) noexcept {
  stopRequested() = 1;
}
