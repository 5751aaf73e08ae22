#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "vantile/memory/cleaner.h"

#include "fakes/fake_memory_ports.h"

namespace vantile {
namespace {

constexpr std::size_t nodeSize = sizeof(memory_node);
constexpr std::size_t chunkSize = 268435456;
constexpr std::uint32_t pagesInChunk = chunkSize / 4096;

/// The chains of blocks that the cleaner builds, on memory that runs out when a test says so.
class Chain : public ::testing::Test {
 protected:
  ~Chain() override { EXPECT_TRUE(pressure.live.empty()) << "not everything was given back"; }

  static std::size_t length(const memory_node* head) {
    std::size_t nodes = 0;
    for (; head; head = head->next) ++nodes;
    return nodes;
  }

  testing::FakeMemoryPorts ports;
  testing::FakePressureMemory& pressure = *ports.pressure;
  testing::FakeHostMemory& host = *ports.host;
  memory_node head = {};
};

TEST_F(Chain, AppendsOneBlockMoreThanAskedFor) {
  memory_node* const last = add_memory_block(&head, 1024, 3, nullptr);
  EXPECT_EQ(length(&head), 1u + 4);
  EXPECT_EQ(last->next, nullptr);
  EXPECT_EQ(std::count(pressure.sizes.begin(), pressure.sizes.end(), 1024), 4);
  auto_free(head.next);
}

TEST_F(Chain, ACountBelowZeroStillAppendsOne) {
  for (const std::int32_t count : {0, -1, INT32_MIN}) {
    head.next = nullptr;
    add_memory_block(&head, 16, count, nullptr);
    EXPECT_EQ(length(&head), 2u) << count;
    auto_free(head.next);
  }
}

TEST_F(Chain, FillsEveryByteOfABlockWithOne) {
  const auto* const bytes =
      static_cast<const unsigned char*>(add_memory_block(&head, 1024, 0, nullptr)->data);
  EXPECT_TRUE(std::all_of(bytes, bytes + 1024, [](unsigned char byte) { return byte == 1; }));
  auto_free(head.next);
}

TEST_F(Chain, AppendsAfterTheGivenNode) {
  memory_node* const first = add_memory_block(&head, 16, 0, nullptr);
  EXPECT_EQ(head.next, first);
  memory_node* const second = add_memory_block(first, 16, 0, nullptr);
  EXPECT_EQ(first->next, second);
  auto_free(head.next);
}

TEST_F(Chain, ANullNodeGivesNull) {
  EXPECT_EQ(add_memory_block(nullptr, 1024, 3, nullptr), nullptr);
  EXPECT_EQ(add_memory_block_ex(nullptr), nullptr);
  auto_free(nullptr);
  EXPECT_EQ(pressure.requests, 0u);
}

TEST_F(Chain, AStopFlagOfOneAppendsNothing) {
  std::int32_t stop = 1;
  EXPECT_EQ(add_memory_block(&head, 1024, 3, &stop), &head);
  EXPECT_EQ(pressure.requests, 0u);
}

TEST_F(Chain, AStopFlagOfAnotherValueDoesNotStopIt) {
  std::int32_t stop = 2;
  add_memory_block(&head, 1024, 3, &stop);
  EXPECT_EQ(length(&head), 5u);
  auto_free(head.next);
}

TEST_F(Chain, AStopFlagSetMeanwhileEndsItBeforeTheNextBlock) {
  std::int32_t stop = 0;
  pressure.onRequest = [&] { stop = pressure.requests == 3 ? 1 : 0; };  // during the second block
  add_memory_block(&head, 1024, 10, &stop);
  EXPECT_EQ(length(&head), 1u + 2);
  auto_free(head.next);
}

TEST_F(Chain, ABlockThatCanNotBeHadEndsItAndGivesTheNodeBack) {
  pressure.failingRequest = 4;  // the second block
  memory_node* const last = add_memory_block(&head, 1024, 10, nullptr);
  EXPECT_EQ(length(&head), 2u);
  EXPECT_EQ(last, head.next);
  auto_free(head.next);
}

TEST_F(Chain, ANodeThatCanNotBeHadEndsItToo) {
  pressure.failingRequest = 3;  // the second node
  add_memory_block(&head, 1024, 10, nullptr);
  EXPECT_EQ(length(&head), 2u);
  auto_free(head.next);
}

TEST_F(Chain, ANegativeSizeIsABlockThatCanNotBeHad) {
  EXPECT_EQ(add_memory_block(&head, -1, 3, nullptr), &head);
}

TEST_F(Chain, ModeOneTakesSeventeenSmallBlocksAndNoChunk) {
  host.pages.free = 100 * pagesInChunk;
  memory_node* const chain = auto_calloc(nullptr, 1);
  EXPECT_EQ(length(chain), 1u + 17);
  EXPECT_EQ(chain->data, nullptr);
  EXPECT_TRUE(pressure.chunks.empty());
  auto_free(chain);
}

TEST_F(Chain, AnyOtherModeTakesElevenSmallBlocksAndWhatIsFree) {
  host.pages.free = pagesInChunk;
  for (const std::uint32_t mode : {0u, 2u, 0xffffffffu}) {
    memory_node* const chain = auto_calloc(nullptr, mode);
    EXPECT_EQ(length(chain), 1u + 11 + 1 + 2) << mode;  // the table, two chunks
    auto_free(chain);
  }
}

TEST_F(Chain, NoHeadNoChain) {
  pressure.failingRequest = 1;
  EXPECT_EQ(auto_calloc(nullptr, 0), nullptr);
}

TEST_F(Chain, LessThanAChunkFreeTakesTheTableOfOneSlotOnly) {
  host.pages.free = pagesInChunk - 1;
  memory_node* const last = add_memory_block_ex(&head);
  EXPECT_EQ(length(&head), 2u);
  EXPECT_EQ(pressure.sizes, (std::vector<std::size_t>{sizeof(void*), nodeSize}));
  EXPECT_EQ(*static_cast<void**>(last->data), nullptr);
  EXPECT_TRUE(pressure.chunks.empty());
  auto_free(head.next);
}

TEST_F(Chain, TakesAChunkForEachThatIsFreeAndOneMore) {
  host.pages.free = 3 * pagesInChunk + 5;
  add_memory_block_ex(&head);
  EXPECT_EQ(pressure.sizes.front(), 4 * sizeof(void*));
  EXPECT_EQ(pressure.chunks, std::vector<std::size_t>(4, chunkSize));
  auto_free(head.next);
}

TEST_F(Chain, WritesEveryByteOfAChunk) {
  host.pages.free = pagesInChunk;
  pressure.mostChunks = 1;
  const auto* const chunk = static_cast<const char*>(add_memory_block_ex(&head)->data);
  EXPECT_TRUE(std::all_of(chunk, chunk + chunkSize, [](char byte) { return byte == 1; }));
  auto_free(head.next);
}

TEST_F(Chain, ARefusedChunkEndsTheGrowthAndKeepsWhatThereIs) {
  host.pages.free = 10 * pagesInChunk;
  pressure.mostChunks = 2;
  add_memory_block_ex(&head);
  EXPECT_EQ(length(&head), 1u + 1 + 2);
  auto_free(head.next);
}

TEST_F(Chain, AChunkWhoseNodeCanNotBeHadIsGivenBack) {
  host.pages.free = 10 * pagesInChunk;
  pressure.failingRequest = 4;  // table, its node, the first chunk's node, the second's
  add_memory_block_ex(&head);
  EXPECT_EQ(length(&head), 1u + 1 + 1);
  EXPECT_EQ(pressure.chunks.size(), 2u);
  auto_free(head.next);
}

TEST_F(Chain, ATableWhoseNodeCanNotBeHadIsGivenBack) {
  host.pages.free = pagesInChunk;
  pressure.failingRequest = 2;
  add_memory_block_ex(&head);
  EXPECT_EQ(length(&head), 1u + 2);
  auto_free(head.next);
}

TEST_F(Chain, ATableThatCanNotBeHadIsDoneWithout) {
  host.pages.free = pagesInChunk;
  pressure.failingRequest = 1;
  add_memory_block_ex(&head);
  EXPECT_EQ(length(&head), 1u + 2);
  auto_free(head.next);
}

TEST_F(Chain, ElevenReadingsOfNoFreeMemoryEndTheGrowth) {
  host.pages.free = 100 * pagesInChunk;
  host.page = 4096;
  // Free once, when the chunks are counted; after that nothing is.
  pressure.onRequest = [&] { host.pages.free = pressure.requests < 2 ? host.pages.free : 0; };
  add_memory_block_ex(&head);
  EXPECT_EQ(pressure.chunks.size(), 11u);
  auto_free(head.next);
}

TEST_F(Chain, AReadingWithTenBytesFreeIsNotLow) {
  host.page = 1;
  host.pages.free = 2 * chunkSize;
  pressure.onRequest = [&] { host.pages.free = pressure.requests < 2 ? host.pages.free : 10; };
  pressure.mostChunks = 20;
  host.pages.free = 0xffffffff;  // 15 chunks of bytes
  add_memory_block_ex(&head);
  EXPECT_EQ(pressure.chunks.size(), 16u);
  auto_free(head.next);
}

TEST_F(Chain, WithoutAReadingNoChunkIsTaken) {
  host.refuses = true;
  host.pages.free = 10 * pagesInChunk;
  add_memory_block_ex(&head);
  EXPECT_TRUE(pressure.chunks.empty());
  auto_free(head.next);
}

TEST_F(Chain, AReadingThatFailsLaterCountsAsNoFreeMemory) {
  host.pages.free = 100 * pagesInChunk;
  pressure.onRequest = [&] { host.refuses = pressure.requests >= 2; };
  add_memory_block_ex(&head);
  EXPECT_EQ(pressure.chunks.size(), 11u);
  auto_free(head.next);
}

}  // namespace
}  // namespace vantile
