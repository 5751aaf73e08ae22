#include <pthread.h>

#include <cerrno>

#include "fakes/counters.h"

#undef pthread_create
#undef pthread_detach

extern "C" {

int fake_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                        void* argument) {
  if (fakes::machine.refusesThreads) return EAGAIN;
  const int result = ::pthread_create(thread, attributes, start, argument);
  const std::lock_guard lock(fakes::mutex);
  if (result == 0) ++fakes::counts.threads;
  return result;
}

int fake_pthread_detach(pthread_t thread) {
  const std::lock_guard lock(fakes::mutex);
  --fakes::counts.threads;
  return ::pthread_detach(thread);
}

}  // extern "C"

int pthread_setname_np(const char* name) {
  return ::pthread_setname_np(::pthread_self(), name);
}
