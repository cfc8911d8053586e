/*
 * Calls echo with a text on an XML-RPC server, from plain C, and prints what comes back. Tells the
 * three ways a call can end apart:
 *
 *     example_call_in_c http://localhost:8080/RPC2 "some text"
 */
#include <stdio.h>

#include <BQ/BQ.h>
#include <VX/VX.h>

/* The member of a transport failure that says what happened, as a text that the caller releases. */
static const BQString* copyReason(const BQDictionary* failure) {
  BQStreamError error = {0, 0};
  BQNumberGetValue(BQDictionaryGetValue(failure, kVXStreamErrorDomain), kBQNumberSInt32Type, &error.domain);
  BQNumberGetValue(BQDictionaryGetValue(failure, kVXStreamErrorError), kBQNumberSInt32Type, &error.error);
  /* Below -65000 are the library's own errors, which bring their own message. */
  if (error.error < -65000) return BQCopyDescription(BQDictionaryGetValue(failure, kVXStreamErrorMessage));
  return BQStreamErrorCopyDescription(error);
}

static int printResult(const BQDictionary* result) {
  BQTypeRef extra = BQDictionaryGetValue(result, kVXFaultExtra);
  const BQString* text = NULL;
  int status = 0;
  if (!VXMethodResultIsFault(result)) {
    /* Whatever the method returned; null if that was nothing. */
    text = BQCopyDescription(BQDictionaryGetValue(result, kVXMethodInvocationResult));
  } else if (extra != NULL && BQGetTypeID(extra) == BQDictionaryGetTypeID()) {
    text = copyReason(extra);
    status = 3;
  } else {
    text = BQStringCreateWithFormat(BQSTR("the server answered with fault %@: %@"),
                                    BQDictionaryGetValue(result, kVXFaultCode),
                                    BQDictionaryGetValue(result, kVXFaultString));
    status = 1;
  }
  fprintf(status == 0 ? stdout : stderr, "%s\n", BQStringGetUTF8Ptr(text));
  BQRelease(text);
  return status;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: %s URL TEXT\n", argv[0]);
    return 2;
  }

  const BQString* address = BQStringCreateWithCString(argv[1], kBQStringEncodingUTF8);
  const BQURL* url = BQURLCreateWithString(address, NULL);
  const BQString* text = BQStringCreateWithCString(argv[2], kBQStringEncodingUTF8);
  VXMethodInvocationRef invocation = VXMethodInvocationCreate(url, BQSTR("echo"), kVXXMLRPCProtocol);
  if (invocation == NULL || text == NULL) {
    fprintf(stderr, "%s: not a URL and a text in UTF-8\n", argv[0]);
    return 2;
  }

  BQTypeRef name = BQSTR("text");
  BQTypeRef value = text;
  const BQDictionary* parameters = BQDictionaryCreate(&name, &value, 1);
  VXMethodInvocationSetParameters(invocation, parameters, NULL);

  /* Without this the call waits as long as the server takes. */
  int seconds = 30;
  const BQNumber* limit = BQNumberCreate(kBQNumberIntType, &seconds);
  VXMethodInvocationSetProperty(invocation, kVXMethodInvocationTimeoutValue, limit);

  const BQDictionary* result = VXMethodInvocationInvoke(invocation);
  int status = printResult(result);

  BQRelease(result);
  BQRelease(limit);
  BQRelease(parameters);
  BQRelease(invocation);
  BQRelease(text);
  BQRelease(url);
  BQRelease(address);
  return status;
}
