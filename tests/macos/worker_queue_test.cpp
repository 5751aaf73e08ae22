#include "vantile/foundation/worker_queue.h"

#include <vector>

#include "seam.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

class WorkerQueueSeam : public Seam {
 protected:
  std::function<void()> note(int number) {
    return [this, number] { done.push_back(number); };
  }

  std::vector<int> done;
};

TEST_F(WorkerQueueSeam, HandsWorkToTheGlobalQueueInOrder) {
  systemWorkerQueue().submit(note(1));
  systemWorkerQueue().submit(note(2));
  EXPECT_TRUE(done.empty());
  fakes::runGlobalQueue();
  EXPECT_EQ(done, (std::vector{1, 2}));
}

TEST_F(WorkerQueueSeam, HandsWorkOnOnceItsDelayHasGoneBy) {
  systemWorkerQueue().submitAfter(3s, note(1));
  fakes::advance(2s);
  fakes::runGlobalQueue();
  EXPECT_TRUE(done.empty());
  fakes::advance(1s);
  fakes::runGlobalQueue();
  EXPECT_EQ(done, std::vector{1});
}

TEST_F(WorkerQueueSeam, TakesANegativeDelayForNone) {
  systemWorkerQueue().submitAfter(-3s, note(1));
  fakes::runGlobalQueue();
  EXPECT_EQ(done, std::vector{1});
}

TEST_F(WorkerQueueSeam, LetsGoOfWorkOnceDone) {
  const auto held = std::make_shared<int>();
  systemWorkerQueue().submit([held] {});
  systemWorkerQueue().submitAfter(0s, [held] {});
  EXPECT_EQ(held.use_count(), 3);
  fakes::runGlobalQueue();
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace vantile
