#include "vantile/network/net_ppp.h"

#include <algorithm>
#include <array>
#include <utility>

#include "vantile/network/network_keys.h"
#include "vantile/network/network_ports.h"
#include "vantile/network/ppp_messages.h"
#include "vantile/network/ppp_time.h"
#include "vantile/network/shared_network.h"

namespace vantile {
namespace {

constexpr std::uint32_t longestPayload = 64u << 10;

std::optional<std::uint32_t> numberIn(const std::optional<std::string>& payload) {
  return payload ? parsePppNumber(*payload) : std::nullopt;
}

}  // namespace

/// One operation's turn on the stream and its time, of which waiting for the turn is a part.
class NetPPP::Turn {
 public:
  explicit Turn(NetPPP& owner)
      : owner_(owner), began_(owner.ports_->now()), until_(began_ + SharedPppTime::left()) {
    std::unique_lock lock(owner.turnLock_);
    isMine_ =
        owner.turnEnded_.wait_for(lock, owner.left(until_), [this] { return !owner_.isTaken_; });
    if (isMine_) owner.isTaken_ = true;
  }
  ~Turn() {
    if (isMine_) {
      const std::lock_guard lock(owner_.turnLock_);
      owner_.isTaken_ = false;
    }
    owner_.turnEnded_.notify_one();
    SharedPppTime::spend(owner_.ports_->now() - began_);
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  /// When its time ends; at once where others had the stream all the time.
  Moment until() const { return isMine_ ? until_ : began_; }

 private:
  NetPPP& owner_;
  const Moment began_, until_;
  bool isMine_ = false;
};

SharedInstance<NetPPP>& sharedPppController() {
  static auto& instance = *new SharedInstance<NetPPP>;
  return instance;
}

std::shared_ptr<NetPPP> NetPPP::singleton() {
  return sharedPppController().get([] { return init(); });
}

std::shared_ptr<NetPPP> NetPPP::init() {
  std::shared_ptr<NetPPP> controller(new NetPPP(NetworkPorts::installed()));
  const Turn turn(*controller);
  return !controller->hasDaemon() || controller->isConnected(turn.until()) ? controller : nullptr;
}

NetPPP::NetPPP(NetworkPorts ports)
    : ports_(std::make_unique<const NetworkPorts>(std::move(ports))) {}

NetPPP::~NetPPP() = default;

bool NetPPP::hasDaemon() const {
  return ports_->ppp != nullptr;
}

std::chrono::nanoseconds NetPPP::left(Moment until) const {
  return std::max(std::chrono::nanoseconds(until - ports_->now()), std::chrono::nanoseconds(0));
}

/// Whether there is a connection, made now where there was none, and time and a daemon to use it.
bool NetPPP::isConnected(Moment until) {
  if (!hasDaemon() || left(until).count() == 0 || pppAbsence().lasts(ports_->now())) return false;
  if (pppconfdHandle) return true;
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
  if (away) pppAbsence().begin(ports_->now());
}

std::optional<std::string> NetPPP::pppconfdExecMessage(std::string_view request) {
  const Turn turn(*this);
  return exchange(request, turn.until()).payload;
}

NetPPP::Answer NetPPP::exchange(std::string_view request, Moment until) {
  if (!isConnected(until) || !isDone(pppconfdHandle->send(request, left(until)))) return {};
  return reply(until);
}

NetPPP::Answer NetPPP::reply(Moment until) {
  std::array<char, pppHeaderSize> bytes = {};
  if (!isDone(pppconfdHandle->receive(bytes.data(), bytes.size(), left(until)))) return {};
  const auto header = parsePppHeader({bytes.data(), bytes.size()});
  if (!header || header->length == 0) return {.given = true, .payload = {}};
  if (header->length > longestPayload) {
    dropStream(true);  // what follows is not to be read, and the daemon not in its right mind
    return {};
  }
  std::string payload(header->length, '\0');
  if (!isDone(pppconfdHandle->receive(payload.data(), payload.size(), left(until)))) return {};
  // A failure's payload is read to stay in step.
  return {.given = true,
          .payload = header->result == 0 ? std::optional(std::move(payload)) : std::nullopt};
}

/// A request that can't be made is as good as answered: there is no such link.
NetPPP::Answer NetPPP::ask(PppCommand command, std::uint32_t link, std::string_view payload,
                           Moment until) {
  const auto request = pppRequest(command, link, payload);
  return request ? exchange(*request, until) : Answer{.given = true, .payload = {}};
}

std::shared_ptr<Dictionary> NetPPP::queryStatusWithServiceID(std::string_view serviceID) {
  return status(PppCommand::linkByServiceID, serviceID).value_or(nullptr);
}

std::shared_ptr<Dictionary> NetPPP::queryStatusWithInterfaceName(std::string_view name) {
  return status(PppCommand::linkByInterfaceName, name).value_or(nullptr);
}

NetPPP::Told NetPPP::status(PppCommand by, std::string_view name) {
  const Turn turn(*this);
  auto answer = ask(by, noPppLink, name, turn.until());
  const auto link = numberIn(answer.payload);
  if (link) answer = ask(PppCommand::status, *link, {}, turn.until());
  if (!answer.given) return std::nullopt;
  if (!link) return nullptr;
  const auto record = answer.payload ? parsePppStatus(*answer.payload) : std::nullopt;
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
  const Turn turn(*this);
  const auto found = ask(PppCommand::linkByServiceID, noPppLink, serviceID, turn.until());
  if (const auto link = numberIn(found.payload)) ask(command, *link, {}, turn.until());
}

std::uint32_t NetPPP::queryPPPconfdLinkCount() {
  const Turn turn(*this);
  return numberIn(ask(PppCommand::linkCount, noPppLink, {}, turn.until()).payload).value_or(0);
}

}  // namespace vantile
