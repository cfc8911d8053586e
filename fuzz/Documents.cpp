#include "Fuzz.h"

#include <array>
#include <utility>

namespace fuzz {
namespace {

using Handler = Owned<OpaqueVXProtocolHandlerRef>;

/* Returns the element's own name, and leaves one without a child to the library. */
BQTypeRef readAsName(VXMethodInvocationRef, const BQTree* element, const BQTree*, void*) {
  if (BQTreeGetFirstChild(element) == nullptr) return nullptr;
  return BQStringCreateCopy(BQXMLNodeGetString(BQXMLTreeGetNode(element)));
}

/* Writes true values, and leaves false ones to the library. */
const BQString* writeTruth(VXMethodInvocationRef, BQTypeRef value, void*) {
  return value == kBQBooleanTrue ? BQSTR("<%@>yes</%@>") : nullptr;
}

Handler makeHandlerWithOverrides(const BQString* protocol) {
  auto handler = own(VXProtocolHandlerCreate(nullptr, protocol));
  const std::array<const BQString*, 2> names[] = {
      {BQSTR("urn:o"), BQSTR("custom")}, {BQSTR("*"), BQSTR("anywhere")}, {nullptr, BQSTR("nowhere")}};
  for (const auto& [uri, name] : names)
    VXProtocolHandlerSetDeserializationOverride(handler.get(), uri, name, readAsName, nullptr);
  VXProtocolHandlerSetSerializationOverride(handler.get(), BQBooleanGetTypeID(), writeTruth, nullptr);
  return handler;
}

Owned<const BQDictionary> read(const Handler& handler, bool isRequest, const BQData* document) {
  return own(isRequest ? VXProtocolHandlerCopyRequestDictionary(handler.get(), document)
                       : VXProtocolHandlerCopyReplyDictionary(handler.get(), BQSTR("method"), document));
}

template <class Object = void>
auto* get(const Owned<const BQDictionary>& dictionary, const BQString* key) {
  return static_cast<const Object*>(BQDictionaryGetValue(dictionary.get(), key));
}

}  // namespace

void checkRoundTrip(const BQString* protocol, BQTypeRef value) {
  auto handler = own(VXProtocolHandlerCreate(nullptr, protocol));
  const void* names[] = {BQSTR("first"), BQSTR("second")};
  const void* values[] = {value, value};
  auto parameters = own(BQDictionaryCreate(names, values, 2));
  auto order = own(BQArrayCreate(names, 2));
  auto document = own(VXProtocolHandlerCopyRequestDocument(handler.get(), BQSTR("method"), parameters.get(),
                                                           order.get(), nullptr));
  auto request = read(handler, true, document.get());
  check(BQEqual(get(request, kVXRequestMethodName), BQSTR("method")));
  auto* readNames = get<BQArray>(request, kVXRequestParameterOrder);
  check(BQArrayGetCount(readNames) == 2);
  for (BQIndex i = 0; i < 2; ++i) {
    auto* readValues = get<BQDictionary>(request, kVXRequestParameters);
    check(BQEqual(BQDictionaryGetValue(readValues, BQArrayGetValueAtIndex(readNames, i)), value));
  }
  document = own(VXProtocolHandlerCopyReplyDocument(handler.get(), request.get(), value));
  auto reply = read(handler, false, document.get());
  BQTypeRef output = get(reply, BQSTR("Result")); /* SOAP gives all outputs of the method */
  check(BQEqual(output != nullptr ? output : get(reply, kVXMethodInvocationResult), value));
}

void checkDocument(ByteReader input, const BQString* protocol, const BQString* other) {
  const bool isRequest = input.byte() % 2 != 0;
  auto document = makeData(input.rest());
  Owned<const BQString> description;
  for (const BQString* each : {protocol, other}) {
    Handler handler = makeHandlerWithOverrides(each);
    auto dictionary = read(handler, isRequest, document.get());
    check(isRequest || dictionary != nullptr);
    auto previous = std::exchange(description, own(BQCopyDescription(dictionary.get())));
    check(previous == nullptr || BQEqual(previous.get(), description.get()));
    if (dictionary == nullptr) continue;
    BQTypeRef value = get(dictionary, isRequest ? kVXRequestParameters : kVXMethodInvocationResult);
    auto* request = isRequest ? dictionary.get() : nullptr;
    check(!isRequest || own(VXProtocolHandlerCopyFaultDocument(handler.get(), request, request)) != nullptr);
    /* Names of members are not escaped, so that this need not parse. */
    auto reply = own(VXProtocolHandlerCopyReplyDocument(handler.get(), request, value));
    read(handler, false, reply.get());
    checkRoundTrip(each, makePortable(value).get());
  }
}

}  // namespace fuzz
