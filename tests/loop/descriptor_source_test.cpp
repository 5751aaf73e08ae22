#include "vantile/platform/linux/descriptor_source.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "vantile/platform/posix/descriptor.h"

namespace vantile {
namespace {

constexpr std::chrono::seconds longEnough(5);

/// A counter that is readable once it was written, on a thread whose loop is new.
class SourceOnALoop : public ::testing::Test {
 protected:
  template <class Body>
  static void onNewThread(Body body) {
    std::thread(body).join();
  }

  const Descriptor counter{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
  void write() const { ::eventfd_write(counter.get(), 1); }
  void read() const {
    eventfd_t value = 0;
    ::eventfd_read(counter.get(), &value);
  }
};

TEST_F(SourceOnALoop, CallsWheneverTheDescriptorCanBeRead) {
  onNewThread([this] {
    int calls = 0;
    const DescriptorSource source(counter.get(), [&] {
      read();
      if (++calls < 3) return write();
      RunLoop::current().stop();
    });
    const auto tooLong = RunLoop::current().after(longEnough, [] { RunLoop::current().stop(); });
    write();
    RunLoop::current().run();
    EXPECT_EQ(calls, 3);
  });
}

TEST_F(SourceOnALoop, MayEndInsideItsOwnCall) {
  onNewThread([this] {
    int calls = 0;
    std::optional<DescriptorSource> source;
    source.emplace(counter.get(), [&] {
      ++calls;
      source.reset();
    });
    write();
    RunLoop::current().dispatch();
    RunLoop::current().dispatch();
    EXPECT_EQ(calls, 1);
  });
}

TEST_F(SourceOnALoop, AnExceptionStaysInside) {
  onNewThread([this] {
    const DescriptorSource source(counter.get(), [this] {
      read();
      throw std::runtime_error("from a call");
    });
    write();
    EXPECT_NO_THROW(RunLoop::current().dispatch());
  });
}

TEST_F(SourceOnALoop, NothingIsCalledOnceItEndedOnAnotherThread) {
  onNewThread([this] {
    int calls = 0;
    auto source = std::make_unique<DescriptorSource>(counter.get(), [&] { ++calls; });
    onNewThread([&] { source.reset(); });
    write();
    RunLoop::current().dispatch();
    EXPECT_EQ(calls, 0);
  });
}

TEST_F(SourceOnALoop, MayOutliveItsThread) {
  std::unique_ptr<DescriptorSource> source;
  onNewThread([&] { source = std::make_unique<DescriptorSource>(counter.get(), [] {}); });
  source.reset();
}

TEST_F(SourceOnALoop, RefusesWhatIsNoDescriptor) {
  onNewThread([] { EXPECT_THROW(DescriptorSource(-1, [] {}), std::system_error); });
}

}  // namespace
}  // namespace vantile
