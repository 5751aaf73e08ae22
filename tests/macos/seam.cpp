#include "seam.h"

#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <iterator>

Seam::Seam() : descriptorsBefore_(openDescriptors()) {
  fakes::reset();
}

void Seam::TearDown() {
  const fakes::Live live = fakes::live();
  EXPECT_EQ(live.hostRights, 0);
  EXPECT_EQ(live.setRights, 0);
  EXPECT_EQ(live.mainPortRights, 0);
  EXPECT_EQ(live.kernelMemory, 0);
  EXPECT_EQ(live.kernelObjects, 0);
  EXPECT_EQ(live.connections, 0);
  EXPECT_EQ(live.sources, 0);
  EXPECT_EQ(live.timers, 0);
  EXPECT_EQ(live.loopReferences, 0);
  EXPECT_EQ(live.work, 0);
  EXPECT_EQ(live.values, 0);
  EXPECT_EQ(live.pools, 0);
  EXPECT_EQ(live.threads, 0);
  EXPECT_EQ(openDescriptors(), descriptorsBefore_);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
  EXPECT_EQ(errno, ECHILD);
}

std::size_t Seam::openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}
