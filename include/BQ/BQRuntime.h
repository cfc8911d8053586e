/* Registration of further classes with the object runtime. */
#ifndef BQ_RUNTIME_H
#define BQ_RUNTIME_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The header in front of every object. Its fields belong to the runtime. */
typedef struct BQRuntimeBase {
  /** The class. */
  uint16_t typeID;
  /** kBQRuntimeImmortal, and what is private to the runtime. */
  uint16_t flags;
  /** The number of references. */
  uint32_t retainCount;
} BQRuntimeBase;

/** Flag: the object is constant and is never counted or destroyed. */
#define kBQRuntimeImmortal 0x1u

/** The identifiers of the classes whose instances can be laid out at compile time. */
enum {
  /** The identifier of strings. */
  kBQRuntimeStringTypeID = 1
};

/**
 * What the runtime knows of a class. Every function may be null. The record must outlive the
 * process' use.
 */
typedef struct __BQRuntimeClass {
  /** 0. */
  BQIndex version;
  /** The name of the class, for descriptions. */
  const char* className;
  /** Called with each new instance, whose extra bytes are zero. */
  void (*init)(BQTypeRef object);
  /** Not called; null. */
  BQTypeRef (*copy)(BQTypeRef object);
  /**
   * Called when the last reference is gone, before the memory is freed. The object cannot be kept: until
   * then retaining and releasing it has no effect, and the functions of the library's own classes take it for
   * no instance.
   */
  void (*finalize)(BQTypeRef object);
  /** Equality of two instances; identity if null. */
  bool (*equal)(BQTypeRef first, BQTypeRef second);
  /** Hash of an instance; made of its address if null. */
  BQHashCode (*hash)(BQTypeRef object);
  /** The text that "%@" inserts, owned by the caller; `copyDebugDesc` if null, and class name and
   * address if both are. */
  const BQString* (*copyFormattingDesc)(BQTypeRef object);
  /** The text that describes an instance, owned by the caller; `copyFormattingDesc` if null. */
  const BQString* (*copyDebugDesc)(BQTypeRef object);
} __BQRuntimeClass;

/** Alias without leading underscores. */
typedef struct __BQRuntimeClass BQRuntimeClass;

/**
 * Registers a class and returns its identifier, or 0 when no more classes can be registered.
 * Classes stay registered for the life of the process. May be called on any thread.
 */
BQ_EXPORT BQTypeID _BQRuntimeRegisterClass(const BQRuntimeClass* runtimeClass);

/**
 * Makes an instance of a class that was registered: the header and `extraBytes` zeroed bytes, with
 * one reference that the caller owns. Null for an unknown class, one of the values' own classes, a
 * negative size or exhausted memory.
 */
BQ_EXPORT BQTypeRef _BQRuntimeCreateInstance(BQTypeID typeID, BQIndex extraBytes);

BQ_EXTERN_C_END

#endif
