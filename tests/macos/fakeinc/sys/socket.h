#pragma once

#include_next <sys/socket.h>

// Linux's own numbers of these are others.
#undef PF_ROUTE
#define PF_ROUTE 17
#define NET_RT_IFLIST 3
#define AF_LINK 18
#define SO_NOSIGPIPE 0x1022
#undef MSG_NOSIGNAL  // which only newer systems have

#ifdef __cplusplus
extern "C" {
#endif
int fake_setsockopt(int socket, int level, int option, const void* value, socklen_t size);
int fake_connect(int socket, const struct sockaddr* address, socklen_t size);
#ifdef __cplusplus
}
#endif
#define setsockopt fake_setsockopt
#define connect fake_connect
