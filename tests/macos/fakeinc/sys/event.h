#pragma once

#include <stdint.h>
#include <time.h>

#define EVFILT_VNODE (-4)
#define EVFILT_USER (-10)

#define EV_ADD 0x0001
#define EV_ENABLE 0x0004
#define EV_CLEAR 0x0020

#define NOTE_TRIGGER 0x01000000
#define NOTE_DELETE 0x00000001
#define NOTE_WRITE 0x00000002
#define NOTE_EXTEND 0x00000004
#define NOTE_ATTRIB 0x00000008
#define NOTE_LINK 0x00000010
#define NOTE_RENAME 0x00000020
#define NOTE_REVOKE 0x00000040

#pragma pack(push, 4)
struct kevent {
  uintptr_t ident;
  int16_t filter;
  uint16_t flags;
  uint32_t fflags;
  intptr_t data;
  void* udata;
};
#pragma pack(pop)

#ifdef __cplusplus
extern "C" {
#endif
int kqueue(void);
int kevent(int queue, const struct kevent* changes, int changeCount, struct kevent* events,
           int eventCount, const struct timespec* timeout);
#ifdef __cplusplus
}
#endif
