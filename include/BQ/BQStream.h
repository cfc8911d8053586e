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
  /** No encrypted connection could be set up. */
  kBQStreamTLSErrorHandshake = 1,
  /** The server's certificate is not to be trusted, or the file of those to trust cannot be read. */
  kBQStreamTLSErrorCertificate = 2,
  /** The certificate of the issuer is not to be trusted. */
  kBQStreamTLSErrorIssuerCertificate = 3,
  /** The encrypted connection failed after it was set up. */
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
  /** The peer closed the connection before a line of its reply had arrived. */
  kBQStreamHTTPErrorEmptyReply = 7,
  /** Any other failure of the transfer. */
  kBQStreamHTTPErrorOther = 100
} BQStreamHTTPError;

/** Errors of kBQStreamErrorDomainResolver. */
typedef enum BQStreamResolverError {
  /** The host of the URL has no address. */
  kBQStreamResolverErrorHost = 1,
  /** The host of the proxy has no address. */
  kBQStreamResolverErrorProxy = 2
} BQStreamResolverError;

/** An error: its domain and its number there. */
typedef struct BQStreamError {
  /** One of the domains above; 0 without an error. */
  BQStreamErrorDomain domain;
  /** The number, as the domain has it; 0 without an error. */
  int32_t error;
} BQStreamError;

/** What happened on a stream; also the bits of an event mask. */
typedef uint32_t BQStreamEventType;
/** No event. */
#define kBQStreamEventNone ((BQStreamEventType)0)
/** The headers of the response have arrived. */
#define kBQStreamEventOpenCompleted ((BQStreamEventType)1)
/** BQReadStreamRead would give bytes. */
#define kBQStreamEventHasBytesAvailable ((BQStreamEventType)2)
/** Never reported by a read stream. */
#define kBQStreamEventCanAcceptBytes ((BQStreamEventType)4)
/** The stream has failed; BQReadStreamGetError says why. */
#define kBQStreamEventErrorOccurred ((BQStreamEventType)8)
/** Everything was read. */
#define kBQStreamEventEndEncountered ((BQStreamEventType)16)

/** Where a stream is in its life. */
typedef enum BQStreamStatus {
  /** Not opened yet. */
  kBQStreamStatusNotOpen = 0,
  /** Opened, and the response's headers have not arrived. */
  kBQStreamStatusOpening = 1,
  /** The headers have arrived, and there is or may come something to read. */
  kBQStreamStatusOpen = 2,
  /** Not reported. */
  kBQStreamStatusReading = 3,
  /** Everything was read. */
  kBQStreamStatusAtEnd = 5,
  /** Closed after it was opened. */
  kBQStreamStatusClosed = 6,
  /** Ended by an error. */
  kBQStreamStatusError = 7
} BQStreamStatus;

/** One English sentence without a full stop that says what an error means; owned by the caller. */
BQ_EXPORT const BQString* BQStreamErrorCopyDescription(BQStreamError error);

BQ_EXTERN_C_END

#endif
