/* What streams report: events, status, errors. */
#ifndef BQ_STREAM_H
#define BQ_STREAM_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** Says what kind of number an error is. */
typedef int32_t BQStreamErrorDomain;

/** No error, or an error outside the domains below. */
#define kBQStreamErrorDomainCustom ((BQStreamErrorDomain)-1)
/** An errno value. */
#define kBQStreamErrorDomainPOSIX ((BQStreamErrorDomain)1)
/** A failure of TLS: one of BQStreamTLSError. */
#define kBQStreamErrorDomainTLS ((BQStreamErrorDomain)3)
/** A failure of HTTP: one of BQStreamHTTPError. */
#define kBQStreamErrorDomainHTTP ((BQStreamErrorDomain)4)
/** A failure of name resolution: one of BQStreamResolverError. */
#define kBQStreamErrorDomainResolver ((BQStreamErrorDomain)12)

/** Errors of kBQStreamErrorDomainTLS. */
typedef enum BQStreamTLSError {
  kBQStreamTLSErrorHandshake = 1,
  kBQStreamTLSErrorCertificate = 2,
  kBQStreamTLSErrorIssuerCertificate = 3,
  kBQStreamTLSErrorTransfer = 4
} BQStreamTLSError;

/** Errors of kBQStreamErrorDomainHTTP. */
typedef enum BQStreamHTTPError {
  /** The URL or its scheme cannot be used. */
  kBQStreamHTTPErrorBadURL = 1,
  /** The connection ended before the whole reply had arrived. */
  kBQStreamHTTPErrorConnectionLost = 2,
  /** The peer sent something that is not HTTP. */
  kBQStreamHTTPErrorParse = 3,
  /** More redirects than are followed, or one that is not allowed. */
  kBQStreamHTTPErrorRedirect = 4,
  /** The proxy could not be used. */
  kBQStreamHTTPErrorProxy = 5,
  /** The reply is larger than the limit. */
  kBQStreamHTTPErrorReplyTooLarge = 6,
  /** The peer closed the connection without sending anything. */
  kBQStreamHTTPErrorEmptyReply = 7,
  /** Any other failure of the transfer. */
  kBQStreamHTTPErrorOther = 100
} BQStreamHTTPError;

/** Errors of kBQStreamErrorDomainResolver. */
typedef enum BQStreamResolverError {
  kBQStreamResolverErrorHost = 1,
  kBQStreamResolverErrorProxy = 2
} BQStreamResolverError;

/** An error: its domain and its number there. */
typedef struct BQStreamError {
  BQStreamErrorDomain domain;
  int32_t error;
} BQStreamError;

/** What happened on a stream; also the bits of an event mask. */
typedef uint32_t BQStreamEventType;
#define kBQStreamEventNone ((BQStreamEventType)0)
#define kBQStreamEventOpenCompleted ((BQStreamEventType)1)
#define kBQStreamEventHasBytesAvailable ((BQStreamEventType)2)
#define kBQStreamEventCanAcceptBytes ((BQStreamEventType)4)
#define kBQStreamEventErrorOccurred ((BQStreamEventType)8)
#define kBQStreamEventEndEncountered ((BQStreamEventType)16)

/** Where a stream is in its life. */
typedef enum BQStreamStatus {
  kBQStreamStatusNotOpen = 0,
  kBQStreamStatusOpening = 1,
  kBQStreamStatusOpen = 2,
  kBQStreamStatusReading = 3,
  kBQStreamStatusAtEnd = 5,
  kBQStreamStatusClosed = 6,
  kBQStreamStatusError = 7
} BQStreamStatus;

/** One English sentence without a full stop that says what an error means; owned by the caller. */
BQ_EXPORT const BQString* BQStreamErrorCopyDescription(BQStreamError error);

BQ_EXTERN_C_END

#endif
