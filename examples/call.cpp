/*
 * Calls add(2, 3) on an XML-RPC server, waits for the answer and prints it:
 *
 *     example_call http://localhost:8080/RPC2
 */
#include <cstdio>

#include <VX/VX.h>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s URL\n", argv[0]);
    return 2;
  }

  /* Where to call, what, and in which protocol. What a Create function gives is ours to release: a holder
   * does. */
  auto text = BQAdopt(BQStringCreateWithCString(argv[1], kBQStringEncodingUTF8));
  auto url = BQAdopt(BQURLCreateWithString(text.get(), nullptr));
  auto invocation = BQAdopt(VXMethodInvocationCreate(url.get(), BQSTR("add"), kVXXMLRPCProtocol));
  if (!invocation) {
    std::fprintf(stderr, "%s is not a URL\n", argv[1]);
    return 2;
  }

  /* The parameters are sent in the order of the dictionary, because no other order is given. */
  int numbers[] = {2, 3};
  BQTypeRef names[] = {BQSTR("a"), BQSTR("b")};
  auto first = BQAdopt(BQNumberCreate(kBQNumberIntType, &numbers[0]));
  auto second = BQAdopt(BQNumberCreate(kBQNumberIntType, &numbers[1]));
  BQTypeRef values[] = {first.get(), second.get()};
  auto parameters = BQAdopt(BQDictionaryCreate(names, values, 2));
  VXMethodInvocationSetParameters(invocation.get(), parameters.get(), nullptr);

  /* There is always a result: the method's value, or a fault if the server or the way to it failed. */
  auto result = BQAdopt(VXMethodInvocationInvoke(invocation.get()));
  bool failed = VXMethodResultIsFault(result.get());
  auto said = BQAdopt(VXMethodResultCopyDescription(result.get()));
  std::printf("%s%s\n", failed ? "failed: " : "", BQStringGetUTF8Ptr(said.get()));
  return failed ? 1 : 0;
}
