/* The caller's context record, which goes with every function that the caller registers. */
#ifndef VX_CLIENT_CONTEXT_H
#define VX_CLIENT_CONTEXT_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/**
 * What is handed to a registered function. The library copies the record. When it does, `retain`
 * (if it and `info` are not null) is called with `info`, and its result is what the function gets;
 * when the copy is dropped, `release` is called with that result. Each of the functions may be null.
 */
typedef struct VXClientContext {
  /** 0. */
  BQIndex version;
  /** The caller's pointer; may be null. */
  void* info;
  /** Called with `info` when the library copies the record; gives what the copy holds instead. */
  void* (*retain)(void* info);
  /** Called with what the copy holds when it is dropped. */
  void (*release)(void* info);
  /** Kept, never called. */
  const BQString* (*copyDescription)(void* info);
} VXClientContext;

BQ_EXTERN_C_END

#endif
