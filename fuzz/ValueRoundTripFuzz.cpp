/* Values, written in every form and read back. */
#include <VX/VX.h>

#include "Fuzz.h"

namespace {

using namespace fuzz;

/* The parameters `first` and `second`, in this order. */
struct Parameters {
  explicit Parameters(BQTypeRef value) {
    const void* keys[] = {BQSTR("first"), BQSTR("second")};
    const void* values[] = {value, value};
    named = own(BQDictionaryCreate(keys, values, 2));
    order = own(BQArrayCreate(keys, 2));
  }

  Owned<const BQDictionary> named;
  Owned<const BQArray> order;
};

class Protocol {
 public:
  explicit Protocol(const BQString* name) : handler_(VXProtocolHandlerCreate(nullptr, name)) {}

  void check(BQTypeRef value) const {
    auto request = sendRequest(Parameters(value));
    BQTypeRef parameters = BQDictionaryGetValue(request.get(), BQSTR("/VXMethodParameters"));
    auto* order =
        static_cast<const BQArray*>(BQDictionaryGetValue(request.get(), BQSTR("/VXMethodParameterOrder")));
    fuzz::check(BQArrayGetCount(order) == 2);
    for (BQIndex i = 0; i < 2; ++i) {
      auto* sent = static_cast<const BQDictionary*>(parameters);
      fuzz::check(BQEqual(BQDictionaryGetValue(sent, BQArrayGetValueAtIndex(order, i)), value));
    }
    auto result = sendReply(request.get(), value);
    fuzz::check(BQEqual(resultOf(result.get()), value));
  }

 private:
  Owned<const BQDictionary> sendRequest(const Parameters& parameters) const {
    auto document = own(VXProtocolHandlerCopyRequestDocument(
        handler_, BQSTR("method"), parameters.named.get(), parameters.order.get(), nullptr));
    fuzz::check(document != nullptr);
    auto request = own(VXProtocolHandlerCopyRequestDictionary(handler_, document.get()));
    fuzz::check(BQEqual(BQDictionaryGetValue(request.get(), BQSTR("/VXMethodName")), BQSTR("method")));
    return request;
  }

  Owned<const BQDictionary> sendReply(const BQDictionary* request, BQTypeRef value) const {
    auto document = own(VXProtocolHandlerCopyReplyDocument(handler_, request, value));
    fuzz::check(document != nullptr);
    return own(VXProtocolHandlerCopyReplyDictionary(handler_, BQSTR("method"), document.get()));
  }

  /* SOAP gives all outputs of the method, of which there is one. */
  static BQTypeRef resultOf(const BQDictionary* result) {
    BQTypeRef output = BQDictionaryGetValue(result, BQSTR("Result"));
    return output != nullptr ? output : BQDictionaryGetValue(result, kVXMethodInvocationResult);
  }

  VXProtocolHandlerRef handler_;
};

void checkPropertyList(BQTypeRef value) {
  auto document = own(BQPropertyListCreateXMLData(value));
  check(document != nullptr);
  check(BQEqual(own(BQPropertyListCreateFromXMLData(document.get(), nullptr)).get(), value));
}

void checkInvocation(BQTypeRef value) {
  auto url = own(BQURLCreateWithString(BQSTR("http://127.0.0.1/"), nullptr));
  auto invocation = own(VXMethodInvocationCreate(url.get(), BQSTR("method"), kVXSOAP2001Protocol));
  Parameters parameters(value);
  VXMethodInvocationSetParameters(invocation.get(), parameters.named.get(), parameters.order.get());
  auto bytes = own(VXMethodInvocationCopySerialization(invocation.get()));
  auto again = own(VXMethodInvocationCreateFromSerialization(bytes.get()));
  check(again != nullptr);
  const BQArray* order = nullptr;
  auto named = own(VXMethodInvocationCopyParameters(again.get(), &order));
  check(BQEqual(own(order).get(), parameters.order.get()));
  check(BQEqual(named.get(), parameters.named.get()));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  static const Protocol protocols[] = {Protocol(kVXXMLRPCProtocol), Protocol(kVXSOAP1999Protocol),
                                       Protocol(kVXSOAP2001Protocol)};
  ByteReader input(bytes, size);
  bool isList = (input.byte() & 1) != 0;
  auto value = buildValue(input, isList ? Carrier::propertyList : Carrier::protocols);
  if (isList) {
    checkPropertyList(value.get());
    checkInvocation(value.get());
  } else {
    for (const Protocol& protocol : protocols) protocol.check(value.get());
  }
  return 0;
}
