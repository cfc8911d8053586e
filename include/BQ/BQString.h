/*
 * Unicode text. Held as UTF-8; lengths, positions and ranges count UTF-8 bytes. A range that cuts
 * a character in two is refused. Comparison without regard to case folds the ASCII letters only.
 */
#ifndef BQ_STRING_H
#define BQ_STRING_H

#include <BQ/BQBase.h>
#include <BQ/BQRuntime.h>
#include <BQ/BQStringEncoding.h>

BQ_EXTERN_C_BEGIN

/** The memory of a constant string; made by the macros below, never by hand. */
typedef struct BQConstantString {
  /** The header of every object. */
  BQRuntimeBase base;
  /** The number of bytes, without the NUL. */
  uint64_t length;
  /** UTF-8, with a NUL behind it. */
  const char* bytes;
} BQConstantString;

/** The initialiser of a constant string; `text` is a literal in UTF-8. */
#define BQ_CONSTANT_STRING_INIT(text) \
  { {kBQRuntimeStringTypeID, kBQRuntimeImmortal, 1}, sizeof(text) - 1, (text) }

/**
 * Defines the static pointer `name` to an immortal constant string made of a literal, without
 * allocation. For use at file or block scope.
 */
#define BQ_DEFINE_STATIC_STRING(name, text)                                     \
  static const BQConstantString name##_storage = BQ_CONSTANT_STRING_INIT(text); \
  static const BQString* const name = (const BQString*)&name##_storage

/**
 * Defines the constant string `name`, which a header declares as `extern const BQString* const`. It
 * is set at compile time, so that initialisers of other files may use it.
 */
#define BQ_DEFINE_STRING(name, text)                                            \
  static const BQConstantString name##_storage = BQ_CONSTANT_STRING_INIT(text); \
  const BQString* const name = (const BQString*)&name##_storage

/** A constant string in an expression: the same object each time the expression is evaluated. */
#ifdef __cplusplus
#define BQSTR(text)                                                               \
  ([]() noexcept -> const BQString* {                                             \
    static constexpr BQConstantString bqConstant = BQ_CONSTANT_STRING_INIT(text); \
    return reinterpret_cast<const BQString*>(&bqConstant);                        \
  }())
#else
#define BQSTR(text)                                                           \
  (__extension__({                                                            \
    static const BQConstantString bqConstant = BQ_CONSTANT_STRING_INIT(text); \
    (const BQString*)&bqConstant;                                             \
  }))
#endif

/** How to compare and search. */
typedef enum BQStringCompareOptions {
  /** Letter by letter, from the start. */
  kBQCompareExact = 0,
  /** ASCII letters of either case are the same. */
  kBQCompareCaseInsensitive = 1,
  /** Search from the end. */
  kBQCompareBackwards = 4
} BQStringCompareOptions;

/** The identifier of the string class. */
BQ_EXPORT BQTypeID BQStringGetTypeID(void);

/* Making strings. Every result is owned by the caller. */

/** From `length` bytes of well-formed UTF-8. Null if they are not, or the length is negative. */
BQ_EXPORT const BQString* BQStringCreateWithUTF8(const char* bytes, BQIndex length);

/** From a NUL-terminated text in an encoding. Null for null or text that is malformed in it. */
BQ_EXPORT const BQString* BQStringCreateWithCString(const char* text, BQStringEncoding encoding);

/** From `length` bytes in an encoding. Null if they are malformed in it or it is not available. */
BQ_EXPORT const BQString* BQStringCreateWithBytes(const void* bytes, BQIndex length,
                                                  BQStringEncoding encoding);

/**
 * Like BQStringCreateWithBytes, but bytes that are UTF-8 as they stand are not copied: they stay
 * the caller's and must outlive the string unchanged.
 */
BQ_EXPORT const BQString* BQStringCreateWithBytesNoCopy(const void* bytes, BQIndex length,
                                                        BQStringEncoding encoding);

/** From the bytes of `data` in an encoding; a leading byte-order mark is dropped. Null as above. */
BQ_EXPORT const BQString* BQStringCreateFromExternalRepresentation(const BQData* data,
                                                                   BQStringEncoding encoding);

/**
 * From a format: printf's conversions, and "%@" for the description of an object. Only "%n" is
 * refused (written as it stands). Numbers are formatted as in the "C" locale. Bytes of "%s" that
 * are no UTF-8 become U+FFFD. Null for a null format.
 */
BQ_EXPORT const BQString* BQStringCreateWithFormat(const BQString* format, ...);

/** The same with arguments already started. */
BQ_EXPORT const BQString* BQStringCreateWithFormatAndArguments(const BQString* format, va_list arguments);

/** An immutable copy; an immutable string that owns its bytes is shared. Null for null. */
BQ_EXPORT const BQString* BQStringCreateCopy(const BQString* string);

/**
 * The string as terminals and logs may show it: control characters, and the marks that change the direction
 * of text, become escapes as in JSON: a backslash, "u", and four digits. With `keepsLines` line feeds and
 * tabs stay. Null for null.
 */
BQ_EXPORT const BQString* BQStringCreateForDisplay(const BQString* string, bool keepsLines);

/** A part of a string. Null for null and for a range that is out of bounds or cuts a character. */
BQ_EXPORT const BQString* BQStringCreateSubstring(const BQString* string, BQRange range);

/** A new empty mutable string with room for `capacity` bytes; it grows as needed. */
BQ_EXPORT BQString* BQStringCreateMutable(BQIndex capacity);

/** A mutable copy. Null for null. */
BQ_EXPORT BQString* BQStringCreateMutableCopy(const BQString* string);

/* Reading. */

/** The number of UTF-8 bytes; 0 for null. */
BQ_EXPORT BQIndex BQStringGetLength(const BQString* string);

/** The UTF-8 bytes and a NUL behind them, borrowed until the string is changed or released. Null for null. */
BQ_EXPORT const char* BQStringGetUTF8Ptr(const BQString* string);

/**
 * Converts the characters of `range` that fit whole into `size` bytes and returns the number of
 * bytes of the string that were converted; `*used`, if not null, receives the bytes made. With a
 * null buffer only counts. A character that the encoding lacks becomes `lossByte`, or, if that is
 * 0, ends the conversion.
 */
BQ_EXPORT BQIndex BQStringGetBytes(const BQString* string, BQRange range, BQStringEncoding encoding,
                                   uint8_t lossByte, uint8_t* buffer, BQIndex size, BQIndex* used);

/**
 * The whole text in an encoding, owned by the caller. A character that the encoding lacks becomes
 * `lossByte`; with a `lossByte` of 0 the result is null instead, as it is for an encoding that is
 * not available and for null.
 */
BQ_EXPORT const BQData* BQStringCreateExternalRepresentation(const BQString* string,
                                                             BQStringEncoding encoding, uint8_t lossByte);

/** The number at the start of the text, white space before it skipped; 0 if there is none. "C" locale. */
BQ_EXPORT double BQStringGetDoubleValue(const BQString* string);

/** Compares two texts by code point. Null stands before everything. */
BQ_EXPORT BQComparisonResult BQStringCompare(const BQString* first, const BQString* second,
                                             BQStringCompareOptions options);

/** Whether both are non-null and equal, ASCII case aside. Quicker than BQStringCompare. */
BQ_EXPORT bool BQStringEqualsIgnoringCase(const BQString* first, const BQString* second);

/** Whether the string begins with `prefix`, exactly. False for null. */
BQ_EXPORT bool BQStringHasPrefix(const BQString* string, const BQString* prefix);

/** Whether the string ends with `suffix`, exactly. False for null. */
BQ_EXPORT bool BQStringHasSuffix(const BQString* string, const BQString* suffix);

/**
 * Searches `range` for a text and writes where it stands to `*found` (if not null). An empty text
 * is never found.
 */
BQ_EXPORT bool BQStringFind(const BQString* string, const BQString* text, BQRange range,
                            BQStringCompareOptions options, BQRange* found);

/* Changing mutable strings. Nothing happens to an immutable one. */

/** Appends a string. */
BQ_EXPORT void BQStringAppend(BQString* string, const BQString* appended);

/** Appends `length` bytes of UTF-8; malformed bytes become U+FFFD. */
BQ_EXPORT void BQStringAppendUTF8(BQString* string, const char* bytes, BQIndex length);

/** Appends a formatted text (see BQStringCreateWithFormat). */
BQ_EXPORT void BQStringAppendFormat(BQString* string, const BQString* format, ...);

/** The same with arguments already started. */
BQ_EXPORT void BQStringAppendFormatAndArguments(BQString* string, const BQString* format, va_list arguments);

/**
 * Room for at least `size` more bytes behind the text, for writing UTF-8 in place; borrowed until
 * the next call on the string. BQStringCommitUTF8 makes what was written part of the text. The
 * bytes must be well-formed UTF-8; they are not checked. Null for an immutable string.
 */
BQ_EXPORT char* BQStringReserveUTF8(BQString* string, BQIndex size);

/** Makes the first `size` bytes written to the room of BQStringReserveUTF8 part of the text. */
BQ_EXPORT void BQStringCommitUTF8(BQString* string, BQIndex size);

/** Cuts the text to its first `length` bytes; longer or inside a character is refused. */
BQ_EXPORT void BQStringTruncate(BQString* string, BQIndex length);

/**
 * Replaces every occurrence of `text` in `range`, from left to right, and returns how many there
 * were. What was put in is not searched again.
 */
BQ_EXPORT BQIndex BQStringFindAndReplace(BQString* string, const BQString* text, const BQString* replacement,
                                         BQRange range, BQStringCompareOptions options);

/** Drops the white space at both ends. */
BQ_EXPORT void BQStringTrimWhitespace(BQString* string);

BQ_EXTERN_C_END

#endif
