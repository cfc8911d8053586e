/*
 * A stream that sends an HTTP request and delivers the body of the reply. Driven by the run loop
 * of one thread; every function is called on that thread. Only http and https.
 */
#ifndef BQ_READ_STREAM_H
#define BQ_READ_STREAM_H

#include <BQ/BQBase.h>
#include <BQ/BQStream.h>

BQ_EXTERN_C_BEGIN

/** A dictionary with the two keys below: the proxy for the request. */
BQ_EXPORT extern const BQString* const kBQStreamPropertyHTTPProxy;
/** A string: the proxy's host. */
BQ_EXPORT extern const BQString* const kBQStreamPropertyHTTPProxyHost;
/** A number: the proxy's port. */
BQ_EXPORT extern const BQString* const kBQStreamPropertyHTTPProxyPort;
/**
 * A boolean: whether redirects are followed; not unless it is the true object. At most 20 are,
 * never from https to http; 301, 302, 307 and 308 keep method and body, 303 becomes GET.
 */
BQ_EXPORT extern const BQString* const kBQStreamPropertyHTTPShouldAutoredirect;
/** Read only: the BQHTTPMessage of the response, without body, once its headers have arrived. */
BQ_EXPORT extern const BQString* const kBQStreamPropertyHTTPResponseHeader;
/** A number: the most bytes that a reply's body may have. 1 GiB if unset. */
BQ_EXPORT extern const BQString* const kBQStreamPropertyHTTPMaximumReplySize;
/**
 * A number above 0: the most connections that the thread has at the same time, from this stream on; further
 * streams wait in order. Unset: all but a quarter of the descriptors that the process may have, at most
 * 16,384.
 */
BQ_EXPORT extern const BQString* const kBQStreamPropertyHTTPConnectionLimit;
/** A boolean: the false object switches off the verification of the server's certificate. */
BQ_EXPORT extern const BQString* const kBQStreamPropertyTLSVerifyPeer;
/**
 * A string: the path of a file of certificates to trust in place of the system's. A stream does not open
 * unless it is a regular file that can be read, of 1 byte to 16 MiB.
 */
BQ_EXPORT extern const BQString* const kBQStreamPropertyTLSCertificateAuthorityFile;

/**
 * Called with each event that the client asked for, on the thread of the run loop. A run of the loop from
 * inside the callback reports no further event of this stream.
 */
typedef void (*BQReadStreamClientCallBack)(BQReadStream* stream, BQStreamEventType event, void* info);

/** What a client registers besides its function. Each function may be null. */
typedef struct BQStreamClientContext {
  /** 0. */
  BQIndex version;
  /** The caller's pointer; may be null. */
  void* info;
  /** Called with `info` when the record is copied; gives what the copy holds instead. */
  void* (*retain)(void* info);
  /** Called with what the copy holds when it is dropped. */
  void (*release)(void* info);
  /** Not called. */
  const BQString* (*copyDescription)(void* info);
} BQStreamClientContext;

/** The identifier of the stream class. */
BQ_EXPORT BQTypeID BQReadStreamGetTypeID(void);

/** A stream for a copy of `request`, owned by the caller. Null for null or a message that is no request. */
BQ_EXPORT BQReadStream* BQReadStreamCreateForHTTPRequest(const BQHTTPMessage* request);

/**
 * Sets a property before the stream is opened; null removes it. False if it is unknown, read only
 * or too late.
 */
BQ_EXPORT bool BQReadStreamSetProperty(BQReadStream* stream, const BQString* key, BQTypeRef value);

/** A property, owned by the caller; null if it is unset. */
BQ_EXPORT BQTypeRef BQReadStreamCopyProperty(BQReadStream* stream, const BQString* key);

/**
 * Registers the client, in place of an earlier one, for the events in the mask. A null function or
 * an empty mask removes the client. False for an event outside the five.
 */
BQ_EXPORT bool BQReadStreamSetClient(BQReadStream* stream, BQStreamEventType events,
                                     BQReadStreamClientCallBack callback,
                                     const BQStreamClientContext* context);

/**
 * Lets the stream work and deliver events while the run loop runs in a mode. Events: open
 * completed, once, when the response's headers are there; bytes available, again and again until
 * the client has read what there is; then either end encountered, once, when everything was read,
 * or error occurred, once, at any time, instead of all that would follow.
 */
BQ_EXPORT void BQReadStreamScheduleWithRunLoop(BQReadStream* stream, BQRunLoop* runLoop,
                                               const BQString* mode);

/** Takes the stream off a mode. No event is delivered there any more. */
BQ_EXPORT void BQReadStreamUnscheduleFromRunLoop(BQReadStream* stream, BQRunLoop* runLoop,
                                                 const BQString* mode);

/**
 * Starts the transfer. False, with the stream's error set, if it cannot be started: it is not
 * scheduled, was opened before, or its request or a property is unusable.
 */
BQ_EXPORT bool BQReadStreamOpen(BQReadStream* stream);

/** Ends the transfer and all events. A finished connection is kept for the next request. */
BQ_EXPORT void BQReadStreamClose(BQReadStream* stream);

/**
 * Takes up to `size` bytes that have arrived, without waiting. Returns their number; 0 if there
 * are none at present or at the end (see the status); -1 after an error and for null.
 */
BQ_EXPORT BQIndex BQReadStreamRead(BQReadStream* stream, uint8_t* buffer, BQIndex size);

/** Whether BQReadStreamRead would give bytes. */
BQ_EXPORT bool BQReadStreamHasBytesAvailable(BQReadStream* stream);

/** Where the stream is in its life. */
BQ_EXPORT BQStreamStatus BQReadStreamGetStatus(const BQReadStream* stream);

/** The error that ended the stream; domain and number 0 if there is none. */
BQ_EXPORT BQStreamError BQReadStreamGetError(const BQReadStream* stream);

BQ_EXTERN_C_END

#endif
