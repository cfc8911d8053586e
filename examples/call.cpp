/*
 * Calls add(2, 3) on an XML-RPC server, waits for the answer and prints it:
 *
 *     example_call http://localhost:8080/RPC2
 */
#include <cstdio>

#include <BQ/BQ.h>
#include <VX/VX.h>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s URL\n", argv[0]);
    return 2;
  }

  /* Where to call, what, and in which protocol. What a Create function gives is ours to release. */
  const BQString* text = BQStringCreateWithCString(argv[1], kBQStringEncodingUTF8);
  const BQURL* url = BQURLCreateWithString(text, nullptr);
  VXMethodInvocationRef invocation = VXMethodInvocationCreate(url, BQSTR("add"), kVXXMLRPCProtocol);
  BQRelease(url);
  BQRelease(text);
  if (invocation == nullptr) {
    std::fprintf(stderr, "%s is not a URL\n", argv[1]);
    return 2;
  }

  /* The parameters are sent in the order of the dictionary, because no other order is given. */
  int numbers[] = {2, 3};
  BQTypeRef names[] = {BQSTR("a"), BQSTR("b")};
  BQTypeRef values[] = {BQNumberCreate(kBQNumberIntType, &numbers[0]),
                        BQNumberCreate(kBQNumberIntType, &numbers[1])};
  const BQDictionary* parameters = BQDictionaryCreate(names, values, 2);
  VXMethodInvocationSetParameters(invocation, parameters, nullptr);
  BQRelease(parameters);
  BQRelease(values[0]);
  BQRelease(values[1]);

  /* There is always a result: the method's value, or a fault if the server or the way to it failed. */
  const BQDictionary* result = VXMethodInvocationInvoke(invocation);
  bool failed = VXMethodResultIsFault(result);
  BQTypeRef answer = BQDictionaryGetValue(result, failed ? kVXFaultExtra : kVXMethodInvocationResult);
  if (failed && answer == nullptr) answer = BQDictionaryGetValue(result, kVXFaultString);
  const BQString* shown = BQCopyDescription(answer);
  std::printf("%s%s\n", failed ? "failed: " : "", BQStringGetUTF8Ptr(shown));

  BQRelease(shown);
  BQRelease(result);
  BQRelease(invocation);
  return failed ? 1 : 0;
}
