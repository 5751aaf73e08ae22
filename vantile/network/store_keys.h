#pragma once

/// Keys of the configuration store; "%@" stands for a service ID or an interface's name.
namespace vantile::store {

inline constexpr const char* globalState = "State:/Network/Global/IPv4";
inline constexpr const char* globalSetup = "Setup:/Network/Global/IPv4";
inline constexpr const char* interfaces = "State:/Network/Interface";
inline constexpr const char* allInterfaces = "State:/Network/Interface.*";  // a pattern

inline constexpr const char* serviceSetup = "Setup:/Network/Service/%@";
inline constexpr const char* serviceInterface = "Setup:/Network/Service/%@/Interface";
inline constexpr const char* pppSetup = "Setup:/Network/Service/%@/PPP";
inline constexpr const char* pppState = "State:/Network/Service/%@/PPP";
inline constexpr const char* ipv4State = "State:/Network/Service/%@/IPv4";
inline constexpr const char* dnsState = "State:/Network/Service/%@/DNS";
inline constexpr const char* modemState = "State:/Network/Service/%@/Modem";

inline constexpr const char* ipv6State = "State:/Network/Interface/%@/IPv6";
inline constexpr const char* appleTalkState = "State:/Network/Interface/%@/AppleTalk";
inline constexpr const char* linkState = "State:/Network/Interface/%@/Link";

}  // namespace vantile::store
