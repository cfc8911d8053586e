/* Text encodings and their names. */
#ifndef BQ_STRING_ENCODING_H
#define BQ_STRING_ENCODING_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The number of a text encoding. */
typedef uint32_t BQStringEncoding;

/** The answer for a name that no encoding has. */
#define kBQStringEncodingInvalidId 0xFFFFFFFFu

/** The legacy Western single-byte set: ASCII below 0x80, accented letters and signs above. */
#define kBQStringEncodingWestern 0u
/** Windows code page 1252. */
#define kBQStringEncodingWindowsLatin1 0x0500u
/** ISO 8859-1; every byte is the character of the same number. */
#define kBQStringEncodingISOLatin1 0x0201u
/** 7-bit ASCII. */
#define kBQStringEncodingASCII 0x0600u
/** UTF-16 with a byte-order mark when read, big-endian with one when written. */
#define kBQStringEncodingUTF16 0x0100u
/** UTF-16, big-endian, no byte-order mark. */
#define kBQStringEncodingUTF16BE 0x10000100u
/** UTF-16, little-endian, no byte-order mark. */
#define kBQStringEncodingUTF16LE 0x14000100u
/** UTF-8. */
#define kBQStringEncodingUTF8 0x08000100u
/** UTF-32 with a byte-order mark when read, big-endian with one when written. */
#define kBQStringEncodingUTF32 0x0C000100u

/**
 * The IANA name of an encoding in the spelling that is preferred in documents ("UTF-8",
 * "ISO-8859-1"); borrowed, lives for the process. Null for a number that is no known encoding.
 */
BQ_EXPORT const BQString* BQStringConvertEncodingToIANACharSetName(BQStringEncoding encoding);

/**
 * The encoding for an IANA name or a common alias, without regard to case;
 * kBQStringEncodingInvalidId for an unknown one or null.
 */
BQ_EXPORT BQStringEncoding BQStringConvertIANACharSetNameToEncoding(const BQString* name);

/** Whether text can be converted from and to the encoding. */
BQ_EXPORT bool BQStringIsEncodingAvailable(BQStringEncoding encoding);

BQ_EXTERN_C_END

#endif
