#include "platform/http/StreamError.h"

#include <cerrno>
#include <cstring>

#include <BQ/BQString.h>

#include "platform/http/Text.h"

namespace bq {
namespace {

BQStreamError posixError(long number) {
  return {kBQStreamErrorDomainPOSIX, static_cast<int32_t>(number)};
}
BQStreamError tlsError(BQStreamTLSError error) {
  return {kBQStreamErrorDomainTLS, error};
}
BQStreamError resolverError(BQStreamResolverError error) {
  return {kBQStreamErrorDomainResolver, error};
}

long longInfo(CURL* handle, CURLINFO info) {
  long value = 0;
  curl_easy_getinfo(handle, info, &value);
  return value;
}

bool isEncrypted(CURL* handle) {
  const char* scheme = nullptr;
  curl_easy_getinfo(handle, CURLINFO_SCHEME, &scheme);
  return scheme != nullptr && equalsIgnoringCase(scheme, "https");
}

BQStreamError errorOfConnect(CURL* handle) {
  long number = longInfo(handle, CURLINFO_OS_ERRNO);
  return number != 0 ? posixError(number) : httpError(kBQStreamHTTPErrorOther);
}

/* The answer of a proxy that was asked for a tunnel and refused, or 0. */
long refusalOfProxy(CURL* handle) {
  long status = longInfo(handle, CURLINFO_HTTP_CONNECTCODE);
  return status / 100 == 2 ? 0 : status;
}

/*
 * An established connection failed. The recorded errno may be older, from an address that was
 * tried in vain before, so that only those which end a connection count.
 */
BQStreamError errorOfConnection(CURL* handle, BQStreamHTTPError otherwise) {
  if (refusalOfProxy(handle) != 0) return httpError(kBQStreamHTTPErrorProxy);
  long number = longInfo(handle, CURLINFO_OS_ERRNO);
  if (number == ECONNRESET || number == EPIPE || number == ETIMEDOUT || number == ECONNABORTED) {
    return posixError(number);
  }
  return isEncrypted(handle) ? tlsError(kBQStreamTLSErrorTransfer) : httpError(otherwise);
}

const char* describeTLS(int32_t error) {
  switch (error) {
    case kBQStreamTLSErrorHandshake:
      return "the encrypted connection could not be set up";
    case kBQStreamTLSErrorCertificate:
      return "the server's certificate could not be verified";
    case kBQStreamTLSErrorIssuerCertificate:
      return "the issuer of the server's certificate could not be verified";
    case kBQStreamTLSErrorTransfer:
      return "the encrypted connection failed";
    default:
      return "the encrypted connection failed in an unknown way";
  }
}

const char* describeHTTP(int32_t error) {
  switch (error) {
    case kBQStreamHTTPErrorBadURL:
      return "the URL cannot be used for HTTP";
    case kBQStreamHTTPErrorConnectionLost:
      return "the connection ended before the whole reply had arrived";
    case kBQStreamHTTPErrorParse:
      return "the server sent something that is not HTTP";
    case kBQStreamHTTPErrorRedirect:
      return "the server redirects too often or to a URL that is not allowed";
    case kBQStreamHTTPErrorProxy:
      return "the proxy could not be used";
    case kBQStreamHTTPErrorReplyTooLarge:
      return "the reply is larger than the limit";
    case kBQStreamHTTPErrorEmptyReply:
      return "the server closed the connection without a reply";
    case kBQStreamHTTPErrorOther:
      return "the transfer failed";
    default:
      return "the transfer failed in an unknown way";
  }
}

const char* describeResolver(int32_t error) {
  return error == kBQStreamResolverErrorProxy ? "the name of the proxy could not be resolved"
                                              : "the name of the host could not be resolved";
}

/* The system's own words, except for errors that every user meets. */
const char* describePOSIX(int32_t number, char* buffer, size_t size) {
  switch (number) {
    case ECONNREFUSED:
      return "the connection was refused";
    case ECONNRESET:
      return "the connection was reset by the server";
    case EPIPE:
      return "the connection was closed by the server";
    case ETIMEDOUT:
      return "the connection timed out";
    case ENETUNREACH:
      return "the network cannot be reached";
    case EHOSTUNREACH:
      return "the host cannot be reached";
    default:
      return strerror_r(number, buffer, size);
  }
}

}  // namespace

BQStreamError errorOfTransfer(CURLcode code, CURL* handle) {
  switch (code) {
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
      /* Also the answer for a reply that does not begin like one of HTTP/1. */
      return httpError(longInfo(handle, CURLINFO_REQUEST_SIZE) > 0 ? kBQStreamHTTPErrorParse
                                                                   : kBQStreamHTTPErrorBadURL);
    case CURLE_COULDNT_RESOLVE_HOST:
      return resolverError(kBQStreamResolverErrorHost);
    case CURLE_COULDNT_RESOLVE_PROXY:
      return resolverError(kBQStreamResolverErrorProxy);
    case CURLE_PROXY:
    case CURLE_ABORTED_BY_CALLBACK: /* Only the answer to CONNECT is aborted. */
      return httpError(kBQStreamHTTPErrorProxy);
    case CURLE_COULDNT_CONNECT:
      return errorOfConnect(handle);
    case CURLE_OPERATION_TIMEDOUT:
      return posixError(ETIMEDOUT);
    case CURLE_GOT_NOTHING:
      return httpError(kBQStreamHTTPErrorEmptyReply);
    case CURLE_PARTIAL_FILE:
      return httpError(kBQStreamHTTPErrorConnectionLost);
    case CURLE_SEND_ERROR:
      return errorOfConnection(handle, kBQStreamHTTPErrorConnectionLost);
    /* Without a failure of the connection this is a body that is chunked in a wrong way. */
    case CURLE_RECV_ERROR:
      return errorOfConnection(handle, kBQStreamHTTPErrorParse);
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
      return httpError(kBQStreamHTTPErrorParse);
    case CURLE_FILESIZE_EXCEEDED:
      return httpError(kBQStreamHTTPErrorReplyTooLarge);
    case CURLE_SSL_CONNECT_ERROR:
      return tlsError(kBQStreamTLSErrorHandshake);
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
      return tlsError(kBQStreamTLSErrorCertificate);
    case CURLE_SSL_ISSUER_ERROR:
      return tlsError(kBQStreamTLSErrorIssuerCertificate);
    default:
      return httpError(kBQStreamHTTPErrorOther);
  }
}

}  // namespace bq

const BQString* BQStreamErrorCopyDescription(BQStreamError error) {
  char buffer[256];
  const char* text = "an unknown error occurred";
  if (!bq::isError(error)) {
    text = "no error occurred";
  } else if (error.domain == kBQStreamErrorDomainPOSIX) {
    text = bq::describePOSIX(error.error, buffer, sizeof buffer);
  } else if (error.domain == kBQStreamErrorDomainTLS) {
    text = bq::describeTLS(error.error);
  } else if (error.domain == kBQStreamErrorDomainHTTP) {
    text = bq::describeHTTP(error.error);
  } else if (error.domain == kBQStreamErrorDomainResolver) {
    text = bq::describeResolver(error.error);
  }
  return bq::makeReceivedText(text);
}
