#pragma once

#include <stdint.h>

#define IFF_UP 0x1
#define IFF_LOOPBACK 0x8

struct if_data {
  unsigned char ifi_type, ifi_typelen, ifi_physical, ifi_addrlen, ifi_hdrlen, ifi_recvquota,
      ifi_xmitquota, ifi_unused1;
  uint32_t ifi_mtu, ifi_metric, ifi_baudrate, ifi_ipackets, ifi_ierrors, ifi_opackets, ifi_oerrors,
      ifi_collisions, ifi_ibytes, ifi_obytes, ifi_imcasts, ifi_omcasts, ifi_iqdrops, ifi_noproto,
      ifi_recvtiming, ifi_xmittiming;
  struct {
    int32_t tv_sec, tv_usec;
  } ifi_lastchange;
  uint32_t ifi_unused2, ifi_hwassist, ifi_reserved1, ifi_reserved2;
};

struct if_msghdr {
  unsigned short ifm_msglen;
  unsigned char ifm_version, ifm_type;
  int ifm_addrs, ifm_flags;
  unsigned short ifm_index;
  struct if_data ifm_data;
};
