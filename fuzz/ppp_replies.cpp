#include "fakes/ppp_replies.h"

#include <chrono>
#include <memory>
#include <string>

#include "vantile/network/net_ppp.h"

#include "fakes/fake_network_ports.h"
#include "fuzz/fuzzer.h"

namespace vantile::fuzz {
namespace {

using testing::FakeNetworkPorts;

/// Asks for everything of a daemon that answers with the bytes, and checks what holds whatever it
/// says.
void talk(FakeNetworkPorts& ports, NetPPP& controller) {
  using namespace std::chrono_literals;
  const auto begin = ports.ppp->now;
  const auto status = controller.queryStatusWithServiceID("service");
  require(ports.ppp->now - begin <= 2s, "nothing waits longer than the time");
  if (status) {
    const bool running = status->uint64("status") == 8u;
    require(status->size() == (running ? 5u : 1u), "a running link tells five numbers");
  }
  controller.connectWithServiceID("service");
  controller.queryPPPconfdLinkCount();
  const auto payload = controller.pppconfdExecMessage("request");
  require(!payload || (!payload->empty() && payload->size() <= 65536), "payloads have a limit");
}

}  // namespace

void consume(std::string_view input) {
  FakeNetworkPorts ports;
  ports.addDaemon();
  const bool closes = !input.empty() && (input[0] & 1) != 0;
  const auto afterwards = closes ? PppTransfer::closed : PppTransfer::late;
  if (!input.empty()) input.remove_prefix(1);
  ports.ppp->scripts.push_back({.replies = std::string(input), .afterwards = afterwards});
  const auto controller = NetPPP::init();
  require(controller != nullptr, "there is a connection");
  talk(ports, *controller);
  // Whatever came before, a daemon that is back and answers rightly is understood.
  if (ports.ppp->connections > 0) return;
  ports.ppp->now += std::chrono::seconds(30);
  ports.ppp->scripts.clear();
  ports.ppp->scripts.push_back({.replies = testing::numberReply(6)});
  require(controller->queryPPPconfdLinkCount() == 6, "a new connection is in step");
}

}  // namespace vantile::fuzz
