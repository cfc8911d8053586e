#include "Fuzz.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "values/DictIterator.h"

namespace fuzz {
namespace {

constexpr int kMaximumDepth = 24;

/* A name of XML that depends on the text. */
Owned<const BQString> makeName(std::string_view text) {
  static constexpr std::string_view kPieces[] = {"a", "Z", "_", "-", ".", "0", "\xC3\xA9", "\xE6\x97\xA5"};
  std::string name = "n";
  for (char byte : text.substr(0, 16)) name += kPieces[static_cast<uint8_t>(byte) % std::size(kPieces)];
  return makeString(name);
}

Owned<const void> makePortableText(std::string text) {
  std::erase(text, '\r');
  if (text.find_first_not_of(" \t\n") == std::string::npos) text += 'x';
  return makeString(text);
}

Owned<const void> makePortableNumber(const BQNumber* number, bool isReal) {
  int32_t integer = 0;
  double real = 0;
  BQNumberGetValue(number, kBQNumberSInt32Type, &integer);
  if (!isReal) return own(BQNumberCreate(kBQNumberSInt32Type, &integer));
  BQNumberGetValue(number, kBQNumberDoubleType, &real);
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", std::isfinite(real) ? real : 0.5);
  real = std::strtod(text, nullptr);
  return own(BQNumberCreate(kBQNumberDoubleType, &real));
}

/* The text forms write years in four digits. */
Owned<const void> makePortableDate(double time) {
  return own(BQDateCreate(std::abs(time) < 6e10 ? std::floor(time) : 0));
}

/* Spends an allowance, since references can make a value much larger than its document. */
Owned<const void> makePortable(BQTypeRef value, int depth, size_t& allowance) {
  const VXTypeID kind = VXGetVXTypeIDFromBQType(value);
  std::string_view text = kind == kVXTypeString ? textOf(static_cast<const BQString*>(value)) : "";
  if (depth == kMaximumDepth || allowance <= text.size()) return makePortableText("");
  allowance -= text.size() + 1;
  if (kind == kVXTypeBoolean) return vx::retain(value);
  if (kind == kVXTypeInteger || kind == kVXTypeDouble)
    return makePortableNumber(static_cast<const BQNumber*>(value), kind == kVXTypeDouble);
  if (kind == kVXTypeDate) return makePortableDate(BQDateGetAbsoluteTime(static_cast<const BQDate*>(value)));
  if (kind == kVXTypeData && BQDataGetLength(static_cast<const BQData*>(value)) > 0) return vx::retain(value);
  if (kind == kVXTypeArray) {
    auto* array = static_cast<const BQArray*>(value);
    auto copy = own(BQArrayCreateMutable(0));
    for (BQIndex i = 0; i < BQArrayGetCount(array); ++i)
      BQArrayAppendValue(copy.get(),
                         makePortable(BQArrayGetValueAtIndex(array, i), depth + 1, allowance).get());
    return copy;
  }
  if (kind == kVXTypeDictionary) {
    auto copy = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
    for (vx::DictIterator entries(static_cast<const BQDictionary*>(value)); entries.hasNext();) {
      BQTypeRef key = entries.nextKey();
      BQDictionarySetValue(copy.get(), makeName(textOf(static_cast<const BQString*>(key))).get(),
                           makePortable(entries.valueFor(key), depth + 1, allowance).get());
    }
    if (BQDictionaryGetCount(copy.get()) > 0) return copy;
  }
  return makePortableText(std::string(text));
}

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

Owned<const void> makePortable(BQTypeRef value) {
  size_t allowance = 20000;
  return makePortable(value, 0, allowance);
}

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
