#include "output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <string>

namespace vantile::host {
namespace {

/// Standard output leads into a pipe of the test's own.
class HostOutput : public testing::Test {
 protected:
  HostOutput() {
    fflush(stdout);
    EXPECT_EQ(pipe2(ends_, O_CLOEXEC | O_NONBLOCK), 0);
    before_ = dup(STDOUT_FILENO);
    dup2(ends_[1], STDOUT_FILENO);
  }
  ~HostOutput() override {
    fflush(stdout);
    dup2(before_, STDOUT_FILENO);
    for (const int fd : {before_, ends_[0], ends_[1]}) close(fd);
  }
  std::string arrived() {
    char text[100];
    const auto size = read(ends_[0], text, sizeof text);
    return size > 0 ? std::string(text, static_cast<std::size_t>(size)) : std::string();
  }

 private:
  int ends_[2] = {-1, -1};
  int before_ = -1;
};

TEST_F(HostOutput, OfItsOwnHasNothingThatOthersPrint) {
  {
    const OwnOutput own;
    printf("Error: no SMC found\n");
    fflush(stdout);
    EXPECT_EQ(writeOut("{}\n"), Written::All);
    printf("Error: again, and not flushed\n");
  }
  EXPECT_EQ(arrived(), "{}\n");
}

TEST_F(HostOutput, IsStandardOutputAgainAfterwards) {
  { const OwnOutput own; }
  EXPECT_EQ(outputFd(), STDOUT_FILENO);
  printf("x");
  fflush(stdout);
  EXPECT_EQ(arrived(), "x");
}

}  // namespace
}  // namespace vantile::host
