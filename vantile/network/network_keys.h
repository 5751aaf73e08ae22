#pragma once

#include "vantile/foundation/value.h"

/// The keys of the dictionaries that the network subsystem gives. A value that the system lacks
/// leaves its key out.
namespace vantile::keys {

// A network service, of `NetManage::queryInterfaceLists`.
inline constexpr Key service_id{"service_id"};
inline constexpr Key is_primary{"is_primary"};  ///< boolean
/// Text: the user's name for it, or the kind of hardware, or "Unknown Interface".
inline constexpr Key user_defind_name{"user_defind_name"};
inline constexpr Key device_name{"device_name"};          ///< text: the interface, "en0", "eth0"
inline constexpr Key connection_type{"connection_type"};  ///< text: "Ethernet", "PPPoE"
inline constexpr Key device_ppp_name{"device_ppp_name"};  ///< text: the PPP interface, "ppp0"
/// Dictionary: the status of its PPP link, see below. Absent on Linux.
inline constexpr Key ppp_status_info{"ppp_status_info"};
inline constexpr Key ipv4_addresses{"ipv4_addresses"};      ///< array of texts
inline constexpr Key ipv4_router{"ipv4_router"};            ///< text
inline constexpr Key ipv4_subnetmasks{"ipv4_subnetmasks"};  ///< array of texts
inline constexpr Key ipv4_dns{"ipv4_dns"};                  ///< array of texts
inline constexpr Key ipv6_addresses{"ipv6_addresses"};      ///< array of texts
inline constexpr Key appletalk_net_id{"appletalk_net_id"};  ///< absent on Linux, as the next two
inline constexpr Key appletalk_node_id{"appletalk_node_id"};
inline constexpr Key appletalk_zone{"appletalk_zone"};
inline constexpr Key linkactive_status{"linkactive_status"};  ///< boolean: there is a link
/// Unsigned 64-bit: bits per second, 10,000,000 where they can't be told; of Ethernet interfaces
/// alone.
inline constexpr Key link_speed{"link_speed"};

// What `Network` adds to it.
inline constexpr Key is_active_interface{"is_active_interface"};  ///< boolean
/// Dictionary: what its interface moved, see below. Like the next one it stays as it was when a
/// sample lacks the interface, until the configuration changes.
inline constexpr Key throughput_details{"throughput_details"};
inline constexpr Key sampling_interval{"sampling_interval"};  ///< double: seconds that it covers

// The configuration of an interface, of `NetManage::interfaceConfigWithName`.
inline constexpr Key service{"service"};  ///< text: its service ID
inline constexpr Key statname{
    "statname"};                      ///< text: the interface whose counters carry its traffic
inline constexpr Key speed{"speed"};  ///< unsigned 64-bit: bits per second
inline constexpr Key name{"name"};    ///< text: the name asked for, or "primary"
inline constexpr Key interfaceup{"interfaceup"};  ///< boolean

// What an interface moved, of `NetManage::netStatsWithInterval`, bytes. An interface that was not
// in the sample before, or is down, has no speeds; its totals are its counters and its peak is 0.
// So it is, where counters are 64 bits wide, with one whose counters fell or that is another one of
// the name. One of the PPP daemon's is there while it is connected, whether or not it is down.
inline constexpr Key if_in{"if_in"};          ///< unsigned 32-bit: received, starting over at 2^32
inline constexpr Key if_out{"if_out"};        ///< unsigned 32-bit: sent, starting over at 2^32
inline constexpr Key total_in{"total_in"};    ///< unsigned 64-bit
inline constexpr Key total_out{"total_out"};  ///< unsigned 64-bit
/// Unsigned 64-bit: bytes since the sample before, not divided by the time.
inline constexpr Key downlink_speed{"downlink_speed"};
inline constexpr Key uplink_speed{"uplink_speed"};  ///< as downlink_speed, sent
inline constexpr Key peak_speek{"peak_speek"};  ///< double: highest bytes per second, either way

// The status of a PPP link, of `NetPPP`, unsigned 32-bit.
inline constexpr Key status{"status"};    ///< 8: connected; 0: its service is not active
inline constexpr Key inBytes{"inBytes"};  ///< received; like the next ones where it is connected
inline constexpr Key outBytes{"outBytes"};
inline constexpr Key timeElapsed{"timeElapsed"};  ///< of the connection, as the daemon counts it
inline constexpr Key timeRemaining{"timeRemaining"};

}  // namespace vantile::keys
