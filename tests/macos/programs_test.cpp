#include "vantile/platform/macos/programs.h"

#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include "vantile/platform/process_lister.h"

#include "seam.h"

namespace vantile {
namespace {

// That none of these leaves a descriptor or a child the end of each test checks.
class ProgramsSeam : public Seam {
 protected:
  static std::optional<FinishedProgram> shell(const std::string& command) {
    return runToEnd("/bin/sh", {"-c", command});
  }
};

TEST_F(ProgramsSeam, ThatAreRunTellTheirOutputAndStatus) {
  const auto finished = shell("echo out; echo lost >&2; exit 3");
  ASSERT_TRUE(finished);
  EXPECT_EQ(finished->output, "out\n");
  EXPECT_EQ(finished->exitStatus, 3);
  EXPECT_EQ(shell("")->exitStatus, 0);
}

TEST_F(ProgramsSeam, MayPrintMoreThanAPipeHolds) {
  const auto finished = shell("head -c 3000000 /dev/zero; exit 1");
  ASSERT_TRUE(finished);
  EXPECT_EQ(finished->output.size(), 3000000u);
  EXPECT_EQ(finished->exitStatus, 1);
}

TEST_F(ProgramsSeam, MayGoOnAfterTheirOutputEnds) {
  EXPECT_EQ(shell("echo out; exec >&-; sleep 0.2; exit 2")->exitStatus, 2);
}

TEST_F(ProgramsSeam, ThatASignalEndedHaveItsNumberForTheirStatus) {
  EXPECT_EQ(shell("kill -9 $$")->exitStatus, SIGKILL);
}

TEST_F(ProgramsSeam, ThatAreNotThereCantBeRun) {
  EXPECT_FALSE(runToEnd("/no/such/program", {}));
}

TEST_F(ProgramsSeam, OfAHostThatForgetsItsChildrenTellNothing) {
  const auto before = ::signal(SIGCHLD, SIG_IGN);
  EXPECT_FALSE(shell("echo out"));
  ::signal(SIGCHLD, before);
}

TEST_F(ProgramsSeam, AreReadAndWaitedForOverSignals) {
  struct sigaction quiet = {}, before = {};
  quiet.sa_handler = [](int) {};  // and no SA_RESTART
  ::sigaction(SIGALRM, &quiet, &before);
  const itimerval often = {{0, 10000}, {0, 10000}};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  const auto finished = shell("sleep 0.1; echo out; exec >&-; sleep 0.1; exit 4");
  const itimerval never = {};
  ::setitimer(ITIMER_REAL, &never, nullptr);
  ::sigaction(SIGALRM, &before, nullptr);
  ASSERT_TRUE(finished);
  EXPECT_EQ(finished->output, "out\n");
  EXPECT_EQ(finished->exitStatus, 4);
}

TEST_F(ProgramsSeam, TheProcessListIsOfTheProcessesAndColumnsAskedFor) {
  const auto own = std::to_string(::getpid());
  const auto listing = systemProcessLister()->run(own, "pid=");
  if (!listing) GTEST_SKIP() << "no /bin/ps here";
  EXPECT_EQ(listing->exitStatus, 0);
  EXPECT_EQ(listing->output.substr(listing->output.find_first_not_of(' ')), own + "\n");
  EXPECT_NE(systemProcessLister()->run(own, "nonsense")->exitStatus, 0);
}

}  // namespace
}  // namespace vantile
