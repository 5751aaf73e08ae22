#include "vantile/platform/ppp_daemon.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "seam.h"
#include "temporary_folder.h"

namespace vantile {
namespace {

using namespace std::chrono_literals;

/// A socket that listens in place of "/var/run/pppconfd".
class PppDaemonSeam : public Seam {
 protected:
  PppDaemonSeam() {
    fakes::machine.socketPath = folder / "pppconfd";
    const auto& path = fakes::machine.socketPath;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    EXPECT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(listener, 1), 0);
  }
  void TearDown() override {
    ::close(listener);
    Seam::TearDown();
  }

  TemporaryFolder folder;
  const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
};

TEST_F(PppDaemonSeam, IsReachedByAnAddressOf106Bytes) {
  const auto made = systemPppDaemon()->reach(2s);
  EXPECT_EQ(made.outcome, PppTransfer::done);
  std::string expected(106, '\0');
  expected[1] = 1;
  expected.replace(2, 17, "/var/run/pppconfd");
  EXPECT_EQ(fakes::machine.socketAddresses, std::vector<std::string>{expected});
}

TEST_F(PppDaemonSeam, BytesGoBothWays) {
  const auto made = systemPppDaemon()->reach(2s);
  ASSERT_TRUE(made.connection);
  const int peer = ::accept(listener, nullptr, nullptr);
  EXPECT_EQ(made.connection->send("request", 2s), PppTransfer::done);
  std::array<char, 7> bytes = {};
  EXPECT_EQ(::recv(peer, bytes.data(), bytes.size(), MSG_WAITALL), 7);
  EXPECT_EQ(std::string(bytes.data(), bytes.size()), "request");
  EXPECT_EQ(::send(peer, "reply", 5, 0), 5);
  EXPECT_EQ(made.connection->receive(bytes.data(), 5, 2s), PppTransfer::done);
  EXPECT_EQ(made.connection->receive(bytes.data(), 1, 10ms), PppTransfer::late);
  ::close(peer);
  EXPECT_EQ(made.connection->receive(bytes.data(), 1, 2s), PppTransfer::closed);
}

TEST_F(PppDaemonSeam, ASocketThatWouldRaiseASignalIsNotUsed) {
  fakes::machine.refusesSocketOption = true;
  EXPECT_EQ(systemPppDaemon()->reach(2s).outcome, PppTransfer::closed);
  EXPECT_TRUE(fakes::machine.socketAddresses.empty());
}

TEST_F(PppDaemonSeam, WithoutOneConnectingIsRefused) {
  fakes::machine.socketPath = folder / "nobody";
  const auto made = systemPppDaemon()->reach(2s);
  EXPECT_EQ(made.outcome, PppTransfer::closed);
  EXPECT_FALSE(made.connection);
}

}  // namespace
}  // namespace vantile
