/*
 * Basic types of the platform layer: sizes, ranges, type identifiers, linkage.
 *
 * What holds for every function of the platform layer, unless its comment says otherwise:
 *
 * - Ownership. A function with *Create* or *Copy* in its name gives a reference that the caller
 *   releases (BQRelease); what any other function gives is borrowed, and lives as long as the object
 *   that it was asked of is neither changed nor released. What is put into an object is retained by it.
 * - Null, or an object of another class, in place of an object: a function that gives an object gives
 *   null, one that gives a number 0, one that gives a truth false, and one that gives nothing does
 *   nothing. A change of an immutable object does nothing either.
 * - Threads. Any thread may call a function, but one object is used by one thread at a time. Immutable
 *   values (const pointers to strings, data, arrays, dictionaries, numbers, dates and URLs) may be used by
 *   many threads at once, and any object may be retained and released by any thread. Run loops and
 *   streams belong to their thread.
 * - Memory. When there is none left, the process ends with a message.
 */
#ifndef BQ_BASE_H
#define BQ_BASE_H

#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

/** Opens what C and C++ both link by its plain name. */
#ifdef __cplusplus
#define BQ_EXTERN_C_BEGIN extern "C" {
#else
#define BQ_EXTERN_C_BEGIN
#endif

/** Closes what BQ_EXTERN_C_BEGIN opened. */
#ifdef __cplusplus
#define BQ_EXTERN_C_END }
#else
#define BQ_EXTERN_C_END
#endif

/** Marks a symbol as part of the shared library's interface. */
#define BQ_EXPORT __attribute__((visibility("default")))

BQ_EXTERN_C_BEGIN

/** A count, a position or a size in bytes; signed, as wide as a pointer. */
typedef intptr_t BQIndex;

/** Identifies a registered class. 0 is no class. */
typedef uint32_t BQTypeID;

/** The result of BQHash. Differs from process to process for equal strings. */
typedef uintptr_t BQHashCode;

/** A borrowed pointer to an object of any class. */
typedef const void* BQTypeRef;

/** The answer of a search that found nothing. */
#define kBQNotFound ((BQIndex)-1)

/** A run of `length` elements (bytes, for strings and data) that begins at `location`. */
typedef struct BQRange {
  /** The position of the first element, from 0. */
  BQIndex location;
  /** How many elements there are. */
  BQIndex length;
} BQRange;

/** Makes a range. */
static inline BQRange BQRangeMake(BQIndex location, BQIndex length) {
  BQRange range;
  range.location = location;
  range.length = length;
  return range;
}

/** How a first value stands to a second one. */
typedef enum BQComparisonResult {
  /** The first stands before the second. */
  kBQCompareLessThan = -1,
  /** Neither stands before the other. */
  kBQCompareEqualTo = 0,
  /** The first stands after the second. */
  kBQCompareGreaterThan = 1
} BQComparisonResult;

/** Seconds. */
typedef double BQTimeInterval;

/** Seconds since 2001-01-01T00:00:00Z, leap seconds not counted. */
typedef double BQAbsoluteTime;

/*
 * The object types. All are opaque. For strings, data, arrays and dictionaries a
 * pointer to const is a value that the holder may only read, and a pointer to
 * non-const one that it may also change.
 */

/** An ordered collection of objects (BQArray.h). */
typedef struct BQArray BQArray;
/** True or false (BQBoolean.h). */
typedef struct BQBoolean BQBoolean;
/** The record of a library in the process (BQBundle.h). */
typedef struct BQBundle BQBundle;
/** Bytes (BQData.h). */
typedef struct BQData BQData;
/** A point in time (BQDate.h). */
typedef struct BQDate BQDate;
/** Pairs of a key and a value, in order (BQDictionary.h). */
typedef struct BQDictionary BQDictionary;
/** A file descriptor on a run loop (BQRunLoop.h). */
typedef struct BQFileDescriptor BQFileDescriptor;
/** An HTTP request or response (BQHTTPMessage.h). */
typedef struct BQHTTPMessage BQHTTPMessage;
/** The absence of a value (BQNull.h). */
typedef struct BQNull BQNull;
/** A number (BQNumber.h). */
typedef struct BQNumber BQNumber;
/** The stream of an HTTP exchange (BQReadStream.h). */
typedef struct BQReadStream BQReadStream;
/** The run loop of a thread (BQRunLoop.h). */
typedef struct BQRunLoop BQRunLoop;
/** What is performed by a run loop once signalled (BQRunLoop.h). */
typedef struct BQRunLoopSource BQRunLoopSource;
/** What is fired by a run loop in time (BQRunLoop.h). */
typedef struct BQRunLoopTimer BQRunLoopTimer;
/** Unicode text (BQString.h). */
typedef struct BQString BQString;
/** A position in the tree of a document (BQTree.h). */
typedef struct BQTree BQTree;
/** A URL (BQURL.h). */
typedef struct BQURL BQURL;
/** What stands at a position of a tree (BQXMLNode.h). */
typedef struct BQXMLNode BQXMLNode;

BQ_EXTERN_C_END

#endif
