/* Basic types of the platform layer: sizes, ranges, type identifiers, linkage. */
#ifndef BQ_BASE_H
#define BQ_BASE_H

#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define BQ_EXTERN_C_BEGIN extern "C" {
#define BQ_EXTERN_C_END }
#else
#define BQ_EXTERN_C_BEGIN
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
  BQIndex location;
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
  kBQCompareLessThan = -1,
  kBQCompareEqualTo = 0,
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
typedef struct BQArray BQArray;
typedef struct BQBoolean BQBoolean;
typedef struct BQBundle BQBundle;
typedef struct BQData BQData;
typedef struct BQDate BQDate;
typedef struct BQDictionary BQDictionary;
typedef struct BQFileDescriptor BQFileDescriptor;
typedef struct BQHTTPMessage BQHTTPMessage;
typedef struct BQNull BQNull;
typedef struct BQNumber BQNumber;
typedef struct BQReadStream BQReadStream;
typedef struct BQRunLoop BQRunLoop;
typedef struct BQRunLoopSource BQRunLoopSource;
typedef struct BQRunLoopTimer BQRunLoopTimer;
typedef struct BQString BQString;
typedef struct BQTree BQTree;
typedef struct BQURL BQURL;
typedef struct BQXMLNode BQXMLNode;

BQ_EXTERN_C_END

#endif
