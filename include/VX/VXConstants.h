/*
 * The library's constants. Each is one immortal string object for the whole process. Keys that
 * begin with "/" are the library's own; a dictionary entry under such a key is never sent as a
 * member of a structure.
 */
#ifndef VX_CONSTANTS_H
#define VX_CONSTANTS_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/* The protocols. Recognised by identity: an equal string made at run time is not one of them. */

/** "XML-RPC": XML-RPC. */
BQ_EXPORT extern const BQString* const kVXXMLRPCProtocol;
/** "SOAP-1999": SOAP 1.1 with the XML Schema namespaces of 1999. */
BQ_EXPORT extern const BQString* const kVXSOAP1999Protocol;
/** "SOAP-2001": SOAP 1.1 with the XML Schema namespaces of 2001. */
BQ_EXPORT extern const BQString* const kVXSOAP2001Protocol;

/* Keys of a result dictionary. */

/** "/Result": the method's return value, of any class; absent if it returned none. */
BQ_EXPORT extern const BQString* const kVXMethodInvocationResult;
/** "/FaultString": a string: what went wrong, or kVXNetworkStreamFaultString. */
BQ_EXPORT extern const BQString* const kVXFaultString;
/** "/FaultCode": a number: the server's fault code, or kVXErrorTransport for a failure of the transport. */
BQ_EXPORT extern const BQString* const kVXFaultCode;
/**
 * "/FaultExtra": for a failure of the transport a dictionary with the three keys below; else a
 * string of further detail, if any.
 */
BQ_EXPORT extern const BQString* const kVXFaultExtra;
/** "/kVXHTTPResponseMessage": the BQHTTPMessage of the reply, if one arrived. */
BQ_EXPORT extern const BQString* const kVXHTTPResponseMessage;

/* A failure of the transport. */

/** "/BQStreamFault": the value under kVXFaultString of such a failure. */
BQ_EXPORT extern const BQString* const kVXNetworkStreamFaultString;
/** "msg": a string: what failed. */
BQ_EXPORT extern const BQString* const kVXStreamErrorMessage;
/** "domain": a number: the error's domain: one of BQStream.h, or of VXErrorDomain. */
BQ_EXPORT extern const BQString* const kVXStreamErrorDomain;
/** "error": a number: the error within the domain, in the library's own one of VXErrorNumber. */
BQ_EXPORT extern const BQString* const kVXStreamErrorError;

/** The domains of the library's own errors. */
typedef enum VXErrorDomain {
  /** There was no reply in time, or none that can be used. */
  kVXErrorDomainReply = -1,
  /** No request was made or sent; the message says why. The number is kVXErrorTransport. */
  kVXErrorDomainRequest = 2
} VXErrorDomain;

/** The library's own errors. */
typedef enum VXErrorNumber {
  /** The time limit of the call is over. */
  kVXErrorTimedOut = -65796,
  /** A reply came that cannot be used: its status, its content type, or its document. */
  kVXErrorUnusableReply = -65795,
  /** The fault code of every failure of the transport. */
  kVXErrorTransport = -65794
} VXErrorNumber;

/* Keys of a request dictionary. */

/** "/VXMethodName": a string: the method that is called; absent if the document names none. */
BQ_EXPORT extern const BQString* const kVXRequestMethodName;
/** "/VXMethodParameters": a dictionary of the parameters by name; in XML-RPC "anon0", "anon1", ... */
BQ_EXPORT extern const BQString* const kVXRequestParameters;
/** "/VXMethodParameterOrder": an array of the parameters' names in their order. */
BQ_EXPORT extern const BQString* const kVXRequestParameterOrder;
/** "/VXTextEncoding": a number: the encoding of the document that was read, for the reply. */
BQ_EXPORT extern const BQString* const kVXRequestTextEncoding;

/* Properties of an invocation for its HTTP exchange. */

/**
 * "/kVXHTTPMessage": a BQHTTPMessage: the template from which the request is copied, with its
 * method, URL, version and headers.
 */
BQ_EXPORT extern const BQString* const kVXHTTPMessage;
/** "/VXPostingMethod": a string: the HTTP method; "POST" if unset. */
BQ_EXPORT extern const BQString* const kVXPostingMethod;
/** "/VXHTTPVersion": a string: kBQHTTPVersion1_0 or kBQHTTPVersion1_1, the default. */
BQ_EXPORT extern const BQString* const kVXHTTPVersion;
/** "/VXHTTPFollowsRedirects": a boolean: whether redirects are followed; true if unset. */
BQ_EXPORT extern const BQString* const kVXHTTPFollowsRedirects;
/** "/VXHTTPProxy": a BQURL: the host and port of the HTTP proxy. */
BQ_EXPORT extern const BQString* const kVXHTTPProxy;
/**
 * "/VXHTTPExtraHeaders": a dictionary of strings by name: further headers, which replace the
 * library's own of the same name.
 */
BQ_EXPORT extern const BQString* const kVXHTTPExtraHeaders;
/**
 * "/VXHTTPCertificateAuthorityFile": a string: the path of a file of certificates (PEM) to trust
 * in place of the system's. A call fails if this is not a regular file that can be read, has no
 * content or more than 16 MiB; one that has no usable certificates fails the TLS handshake.
 */
BQ_EXPORT extern const BQString* const kVXHTTPCertificateAuthorityFile;
/**
 * "/VXHTTPReplySizeLimit": a number: the most bytes that a reply's body may have; 1 GiB if unset
 * or not above 0. A call whose reply is larger ends with a transport fault.
 */
BQ_EXPORT extern const BQString* const kVXHTTPReplySizeLimit;
/**
 * "/VXHTTPConnectionLimit": a number: the most connections that the calling thread has at the same time, from
 * this call on; further calls wait in order. Unset or not above 0: all but a quarter of the descriptors that
 * the process may have, at most 16,384.
 */
BQ_EXPORT extern const BQString* const kVXHTTPConnectionLimit;
/**
 * "kVXMethodInvocationTimeoutValue": a number: the most whole seconds that the exchange may
 * take; none if unset or not above 0.
 */
BQ_EXPORT extern const BQString* const kVXMethodInvocationTimeoutValue;

/* Authentication. Reserved: the library does not read these. */

/** "/VXHTTPAuthInfo": a dictionary with the keys below. */
BQ_EXPORT extern const BQString* const kVXAuthInfo;
/** "username": a string. */
BQ_EXPORT extern const BQString* const kVXAuthInfo_user;
/** "password": a string. */
BQ_EXPORT extern const BQString* const kVXAuthInfo_password;
/** "authScheme": a string. */
BQ_EXPORT extern const BQString* const kVXAuthInfo_authScheme;
/** "forProxy": a boolean. */
BQ_EXPORT extern const BQString* const kVXAuthInfo_forProxy;

/*
 * Captures. As a property the true object switches a capture on, before the first use of the
 * invocation's source; in the result dictionary the key holds what was captured.
 */

/** "/VXDebugOutHeaders": a dictionary: the request's headers. */
BQ_EXPORT extern const BQString* const kVXDebugOutgoingHeaders;
/** "/VXDebugOutBody": a string: the request's body. */
BQ_EXPORT extern const BQString* const kVXDebugOutgoingBody;
/** "/VXDebugInHeaders": a dictionary: the reply's headers. */
BQ_EXPORT extern const BQString* const kVXDebugIncomingHeaders;
/** "/VXDebugInBody": a string: the reply's body. */
BQ_EXPORT extern const BQString* const kVXDebugIncomingBody;

/* SOAP properties and keys. */

/**
 * "/VXHTTPMessageHeaders": as a property a string or an array of strings: the XML of the
 * header elements to send; in a result or request dictionary the array of the headers that
 * were received.
 */
BQ_EXPORT extern const BQString* const kVXSOAPMessageHeaders;
/**
 * "/VXSOAPMethodNamespaceURI": a string: the namespace of the method element; "urn:vx:method"
 * if unset.
 */
BQ_EXPORT extern const BQString* const kVXSOAPMethodNamespaceURI;
/**
 * "/VXSOAPBodyEncodingStyle": one of the two constants below, recognised by identity. A serialized
 * invocation keeps only the text: set the property again on the copy.
 */
BQ_EXPORT extern const BQString* const kVXSOAPBodyEncodingStyle;
/** "rpc": the rpc form of the body. */
BQ_EXPORT extern const BQString* const kVXSOAPStyleRPC;
/** "doc": the document form of the body. */
BQ_EXPORT extern const BQString* const kVXSOAPStyleDoc;
/** "/VXResultParamName": a string: the name of the reply element that holds the result. */
BQ_EXPORT extern const BQString* const kVXMethodInvocationResultParameterName;

/*
 * Control keys inside a dictionary that is sent as a structure. They are never sent
 * themselves.
 */

/** "/VXRecordParamOrder": an array of strings: which members are sent, in which order. */
BQ_EXPORT extern const BQString* const kVXRecordParameterOrder;
/** "/VXRecordNamespaceURI": a string: the namespace of the type (SOAP). */
BQ_EXPORT extern const BQString* const kVXRecordNamespaceURI;
/** "/VXRecordType": a string: the name of the type (SOAP). */
BQ_EXPORT extern const BQString* const kVXRecordType;

BQ_EXTERN_C_END

#endif
