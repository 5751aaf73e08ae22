#include "vantile/network/net_ppp.h"

#include <array>
#include <utility>

#include "vantile/network/network_keys.h"
#include "vantile/network/network_ports.h"
#include "vantile/network/ppp_messages.h"
#include "vantile/network/shared_network.h"

namespace vantile {
namespace {

constexpr std::chrono::seconds longestOperation{2};
constexpr std::chrono::seconds longestAbsence{30};
constexpr std::uint32_t longestPayload = 64u << 10;

}  // namespace

SharedInstance<NetPPP>& sharedPppController() {
  static auto& instance = *new SharedInstance<NetPPP>;
  return instance;
}

std::shared_ptr<NetPPP> NetPPP::singleton() {
  return sharedPppController().get([] { return init(); });
}

std::shared_ptr<NetPPP> NetPPP::init() {
  std::shared_ptr<NetPPP> controller(new NetPPP(NetworkPorts::installed()));
  const bool works = !controller->hasDaemon() || controller->isConnected(controller->deadline());
  return works ? controller : nullptr;
}

NetPPP::NetPPP(NetworkPorts ports)
    : ports_(std::make_unique<const NetworkPorts>(std::move(ports))) {}

NetPPP::~NetPPP() = default;

bool NetPPP::hasDaemon() const {
  return ports_->ppp != nullptr;
}

NetPPP::Moment NetPPP::deadline() const {
  return ports_->now() + longestOperation;
}

std::chrono::nanoseconds NetPPP::left(Moment until) const {
  return std::max(std::chrono::nanoseconds(until - ports_->now()), std::chrono::nanoseconds(0));
}

/// Whether there is a connection, made now where there was none and the daemon is not away.
bool NetPPP::isConnected(Moment until) {
  if (!hasDaemon()) return false;
  if (pppconfdHandle) return true;
  if (awayUntil_ && ports_->now() < *awayUntil_) return false;
  awayUntil_.reset();
  auto made = ports_->ppp->reach(left(until));
  if (!isDone(made.outcome)) return false;
  pppconfdHandle = std::move(made.connection);
  return pppconfdHandle != nullptr;
}

/// Whether the bytes were moved. Where they were not, the stream is out of step with its messages
/// and given up.
bool NetPPP::isDone(PppTransfer outcome) {
  if (outcome != PppTransfer::done) dropStream(outcome == PppTransfer::late);
  return outcome == PppTransfer::done;
}

void NetPPP::dropStream(bool away) {
  pppconfdHandle.reset();
  if (away) awayUntil_ = ports_->now() + longestAbsence;
}

std::optional<std::string> NetPPP::pppconfdExecMessage(std::string_view request) {
  const std::lock_guard lock(turn_);
  return exchange(request, deadline());
}

std::optional<std::string> NetPPP::exchange(std::string_view request, Moment until) {
  if (!isConnected(until) || !isDone(pppconfdHandle->send(request, left(until))))
    return std::nullopt;
  return reply(until);
}

std::optional<std::string> NetPPP::reply(Moment until) {
  std::array<char, pppHeaderSize> bytes = {};
  if (!isDone(pppconfdHandle->receive(bytes.data(), bytes.size(), left(until))))
    return std::nullopt;
  const auto header = parsePppHeader({bytes.data(), bytes.size()});
  if (!header || header->length == 0) return std::nullopt;
  if (header->length > longestPayload) {
    dropStream(true);  // what follows is not to be read, and the daemon not in its right mind
    return std::nullopt;
  }
  std::string payload(header->length, '\0');
  if (!isDone(pppconfdHandle->receive(payload.data(), payload.size(), left(until))))
    return std::nullopt;
  if (header->result != 0) return std::nullopt;  // its payload is read to stay in step
  return payload;
}

std::optional<std::string> NetPPP::ask(PppCommand command, std::uint32_t link,
                                       std::string_view payload, Moment until) {
  const auto request = pppRequest(command, link, payload);
  return request ? exchange(*request, until) : std::nullopt;
}

std::optional<std::uint32_t> NetPPP::link(PppCommand by, std::string_view name, Moment until) {
  const auto payload = ask(by, noPppLink, name, until);
  return payload ? parsePppNumber(*payload) : std::nullopt;
}

std::shared_ptr<Dictionary> NetPPP::queryStatusWithServiceID(std::string_view serviceID) {
  return status(PppCommand::linkByServiceID, serviceID);
}

std::shared_ptr<Dictionary> NetPPP::queryStatusWithInterfaceName(std::string_view name) {
  return status(PppCommand::linkByInterfaceName, name);
}

std::shared_ptr<Dictionary> NetPPP::status(PppCommand by, std::string_view name) {
  const std::lock_guard lock(turn_);
  const auto until = deadline();
  const auto found = link(by, name, until);
  const auto payload = found ? ask(PppCommand::status, *found, {}, until) : std::nullopt;
  const auto record = payload ? parsePppStatus(*payload) : std::nullopt;
  if (!record) return nullptr;
  auto result = std::make_shared<Dictionary>();
  result->set(keys::status, record->status);
  if (record->status != pppRunning) return result;
  result->set(keys::inBytes, record->inBytes);
  result->set(keys::outBytes, record->outBytes);
  result->set(keys::timeElapsed, record->timeElapsed);
  result->set(keys::timeRemaining, record->timeRemaining);
  return result;
}

void NetPPP::connectWithServiceID(std::string_view serviceID) {
  command(PppCommand::connect, serviceID);
}

void NetPPP::disconnectWithServiceID(std::string_view serviceID) {
  command(PppCommand::disconnect, serviceID);
}

void NetPPP::command(PppCommand command, std::string_view serviceID) {
  const std::lock_guard lock(turn_);
  const auto until = deadline();
  if (const auto found = link(PppCommand::linkByServiceID, serviceID, until))
    ask(command, *found, {}, until);
}

std::uint32_t NetPPP::queryPPPconfdLinkCount() {
  const std::lock_guard lock(turn_);
  const auto payload = ask(PppCommand::linkCount, noPppLink, {}, deadline());
  return payload ? parsePppNumber(*payload).value_or(0) : 0;
}

}  // namespace vantile
