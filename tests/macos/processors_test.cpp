#include "vantile/platform/macos/processors.h"

#include <cstring>

#include "seam.h"

namespace vantile {
namespace {

std::string bytesOf(std::uint32_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

class ProcessorsSeam : public Seam {
 protected:
  ProcessorsSeam() { fakes::machine.processorTicks = {1, 2, 3, 4, 5, 0xffffffff, 7, 8}; }
  void TearDown() override {
    processors.reset();
    Seam::TearDown();
  }

  std::shared_ptr<Processors> processors = makeProcessors();
};

TEST_F(ProcessorsSeam, TellTheFourCountersOfEach) {
  const auto ticks = processors->ticks();
  ASSERT_TRUE(ticks);
  ASSERT_EQ(ticks->size(), 2u);
  EXPECT_EQ((*ticks)[0], (ProcessorTicks{.user = 1, .system = 2, .idle = 3, .nice = 4}));
  EXPECT_EQ((*ticks)[1], (ProcessorTicks{.user = 5, .system = 0xffffffff, .idle = 7, .nice = 8}));
}

TEST_F(ProcessorsSeam, GiveTheKernelsArrayBack) {
  processors->ticks();
  processors->ticks();
  EXPECT_EQ(fakes::live().kernelMemory, 0);
}

TEST_F(ProcessorsSeam, AreNoMoreThanTheArrayHasWordsFor) {
  fakes::machine.processorCount = 3;
  EXPECT_EQ(processors->ticks()->size(), 2u);
  fakes::machine.processorCount = 1;
  EXPECT_EQ(processors->ticks()->size(), 1u);
}

TEST_F(ProcessorsSeam, TellNothingWhereTheSystemRefuses) {
  fakes::machine.processorResult = 5;
  fakes::machine.processorSetResult = 5;
  EXPECT_FALSE(processors->ticks());
  EXPECT_FALSE(processors->tasks());
}

TEST_F(ProcessorsSeam, AskForTheirRightsOnceAndGiveThemBack) {
  for (int i = 0; i < 3; ++i) {
    processors->ticks();
    processors->tasks();
  }
  EXPECT_EQ(fakes::live().hostRights, 1);
  EXPECT_EQ(fakes::live().setRights, 1);
  processors.reset();
  EXPECT_EQ(fakes::live().hostRights, 0);
  EXPECT_EQ(fakes::live().setRights, 0);
}

TEST_F(ProcessorsSeam, WithoutAHostTellNothing) {
  fakes::machine.hostName = 0;
  EXPECT_FALSE(processors->ticks());
  EXPECT_FALSE(processors->tasks());
}

TEST_F(ProcessorsSeam, CountTheTasksAndThreadsOfTheDefaultSet) {
  fakes::machine.taskCount = 412;
  fakes::machine.threadCount = 2103;
  EXPECT_EQ(processors->tasks(), (TaskCounts{412, 2103}));
}

TEST_F(ProcessorsSeam, AskAgainForASetThatWasRefused) {
  fakes::machine.processorSet = 0;
  EXPECT_FALSE(processors->tasks());
  fakes::machine.processorSet = 0x305;
  EXPECT_TRUE(processors->tasks());
}

TEST_F(ProcessorsSeam, TellAsManyLoadAveragesAsThereAre) {
  fakes::machine.loadAverages = {1.5, 2.25, 3};
  EXPECT_EQ(processors->loadAverages(), (std::vector<double>{1.5, 2.25, 3}));
  fakes::machine.loadAverages = {1.5};
  EXPECT_EQ(processors->loadAverages(), std::vector<double>{1.5});
  fakes::machine.loadAverages.clear();
  EXPECT_TRUE(processors->loadAverages().empty());
}

TEST_F(ProcessorsSeam, TellClockAndCount) {
  fakes::machine.sysctlNumbers[{6, 15}] = bytesOf(2'400'000'000);
  fakes::machine.sysctlNumbers[{6, 3}] = bytesOf(8);
  EXPECT_EQ(processors->frequency(), 2'400'000'000u);
  EXPECT_EQ(processors->count(), 8u);
}

TEST_F(ProcessorsSeam, TellNoClockThatIsMissingOrWiderThanItsBuffer) {
  EXPECT_FALSE(processors->frequency());
  EXPECT_FALSE(processors->count());
  fakes::machine.sysctlNumbers[{6, 15}] = std::string(8, '\1');
  EXPECT_FALSE(processors->frequency());
}

TEST_F(ProcessorsSeam, AreSharedByTheProcess) {
  EXPECT_EQ(systemProcessors(), systemProcessors());
}

}  // namespace
}  // namespace vantile
