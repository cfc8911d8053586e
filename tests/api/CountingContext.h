/* A client context that counts how often it is retained and released. */
#ifndef API_COUNTING_CONTEXT_H
#define API_COUNTING_CONTEXT_H

#include <VX/VXClientContext.h>

struct CountingContext {
  int retained = 0;
  int released = 0;
  /* What `retain` makes of the info: another pointer than the caller's. */
  CountingContext* self = this;

  VXClientContext context() { return {0, this, retain, release, nullptr}; }

  /* The context whose info this is. */
  static CountingContext* of(void* info) { return *static_cast<CountingContext**>(info); }

 private:
  static void* retain(void* info) {
    auto* counter = static_cast<CountingContext*>(info);
    ++counter->retained;
    return &counter->self;
  }
  static void release(void* info) { ++of(info)->released; }
};

#endif
