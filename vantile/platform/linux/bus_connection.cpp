#include "vantile/platform/linux/bus_connection.h"

#include <systemd/sd-event.h>

#include <cerrno>
#include <cstdint>
#include <iterator>
#include <system_error>
#include <utility>

#include "vantile/foundation/guard.h"

namespace vantile {
namespace {

constexpr std::uint64_t answerWithin = 10'000'000;  // microseconds

void checked(int result) {
  if (result < 0) throw std::system_error(-result, std::generic_category(), "a message bus");
}

struct Unreference {
  void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
  void operator()(sd_event* event) const { sd_event_unref(event); }
};

}  // namespace

/// A rule or a call, with what is to be called for it.
struct BusConnection::Waiting {
  Waiting(BusConnection& connection, Arrived call) : owner(connection), arrived(std::move(call)) {}
  ~Waiting() { sd_bus_slot_unref(slot); }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  BusConnection& owner;
  const Arrived arrived;
  sd_bus_slot* slot = nullptr;
  std::list<Waiting>::iterator self;
};

BusConnection::BusConnection(const std::string& address, std::function<void()> lost) {
  sd_bus* made = nullptr;
  checked(sd_bus_new(&made));
  std::unique_ptr<sd_bus, Unreference> bus(made);
  checked(sd_bus_set_address(made, address.c_str()));
  // Descriptors are left negotiable though none is wanted: without them libsystemd 252 aborts the
  // process when a bus answers the authentication with a line more than it was asked for.
  checked(sd_bus_set_bus_client(made, 1));
  checked(sd_bus_set_method_call_timeout(made, answerWithin));
  // Otherwise the end of the host's event loop would wait for the bus to take what is left.
  checked(sd_bus_set_close_on_exit(made, 0));
  checked(sd_bus_start(made));
  sd_event* loop = nullptr;
  checked(sd_event_default(&loop));
  const std::unique_ptr<sd_event, Unreference> event(loop);
  checked(sd_bus_attach_event(made, loop, SD_EVENT_PRIORITY_NORMAL));
  bus_ = made;
  try {
    listen(
        "type='signal',sender='org.freedesktop.DBus.Local',path='/org/freedesktop/DBus/Local',"
        "interface='org.freedesktop.DBus.Local',member='Disconnected'",
        [lost = std::move(lost)](sd_bus_message*) { lost(); });
  } catch (...) {
    listening_.clear();  // before the bus that it belongs to
    throw;
  }
  static_cast<void>(bus.release());
}

BusConnection::~BusConnection() {
  calls_.clear();
  listening_.clear();
  // Does not flush, which would wait for the bus.
  sd_bus_close_unref(bus_);
}

int BusConnection::onMessage(sd_bus_message* message, void* waiting, sd_bus_error*) {
  const auto* const listener = static_cast<Waiting*>(waiting);
  guarded("a bus signal's call", [&] { listener->arrived(message); });
  return 0;
}

int BusConnection::onAnswer(sd_bus_message* message, void* waiting, sd_bus_error*) {
  auto* const call = static_cast<Waiting*>(waiting);
  std::list<Waiting> answered;
  answered.splice(answered.begin(), call->owner.calls_, call->self);
  guarded("a bus answer's call", [&] { call->arrived(message); });
  return 0;
}

void BusConnection::listen(const std::string& rule, Arrived arrived) {
  auto& listener = listening_.emplace_back(*this, std::move(arrived));
  const int result =
      sd_bus_add_match_async(bus_, &listener.slot, rule.c_str(), onMessage, nullptr, &listener);
  if (result < 0) listening_.pop_back();
  checked(result);
}

void BusConnection::call(const Call& call, Arrived answered) {
  sd_bus_message* made = nullptr;
  checked(sd_bus_message_new_method_call(bus_, &made, call.destination.c_str(), call.path.c_str(),
                                         call.interface.c_str(), call.member.c_str()));
  const std::unique_ptr<sd_bus_message, Unreference> message(made);
  checked(sd_bus_message_set_auto_start(made, 0));
  for (const auto* argument : {&call.first, &call.second})
    if (!argument->empty()) checked(sd_bus_message_append_basic(made, 's', argument->c_str()));
  auto& waiting = calls_.emplace_back(*this, std::move(answered));
  waiting.self = std::prev(calls_.end());
  const int result = sd_bus_call_async(bus_, &waiting.slot, made, onAnswer, &waiting, answerWithin);
  if (result < 0) calls_.pop_back();
  checked(result);
}

}  // namespace vantile
