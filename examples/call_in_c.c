/*
 * Calls echo with a text on an XML-RPC server, from plain C, and prints what comes back:
 *
 *     example_call_in_c http://localhost:8080/RPC2 "some text"
 *
 * The exit status is 0 for an answer, 1 for a fault of the server, 3 if the call failed on the way.
 */
#include <stdio.h>

#include <VX/VX.h>

/* What the call says goes to standard output if it is an answer; the exit status tells the rest. */
static int printResult(const BQDictionary* result) {
  VXResultOutcome outcome = VXMethodResultGetOutcome(result);
  const BQString* text = VXMethodResultCopyDescription(result);
  fprintf(outcome == kVXResultOutcomeValue ? stdout : stderr, "%s\n", BQStringGetUTF8Ptr(text));
  BQRelease(text);
  if (outcome == kVXResultOutcomeValue) return 0;
  return outcome == kVXResultOutcomeServerFault ? 1 : 3;
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
