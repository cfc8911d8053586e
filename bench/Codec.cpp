#include "Codec.h"

#include <cstdio>
#include <cstdlib>

namespace bench {
namespace {

[[noreturn]] void fail(const Payload& payload, const char* what) {
  std::fprintf(stderr, "bench: %s: %s\n", payload.name.c_str(), what);
  std::exit(1);
}

}  // namespace

Codec::Codec(const BQString* protocol) : handler_(VXProtocolHandlerCreate(nullptr, protocol)) {
  if (protocol == kVXXMLRPCProtocol) return;
  VXProtocolHandlerSetProperty(handler_, kVXMethodInvocationResultParameterName, BQSTR("Result"));
  const auto document =
      BQAdopt(VXProtocolHandlerCopyRequestDocument(handler_, BQSTR("bench"), nullptr, nullptr, nullptr));
  request_ = BQAdopt(VXProtocolHandlerCopyRequestDictionary(handler_, document.get()));
}

const Codec& Codec::xmlRPC() {
  static const Codec codec(kVXXMLRPCProtocol);
  return codec;
}

const Codec& Codec::soap() {
  static const Codec codec(kVXSOAP2001Protocol);
  return codec;
}

BQRef<const BQData> Codec::encodeReply(BQTypeRef value) const {
  return BQAdopt(VXProtocolHandlerCopyReplyDocument(handler_, request_.get(), value));
}

BQRef<const BQDictionary> Codec::decodeReply(const BQData* document) const {
  return BQAdopt(VXProtocolHandlerCopyReplyDictionary(handler_, BQSTR("bench"), document));
}

BQRef<const BQData> Codec::checkedReply(const Payload& payload) const {
  const auto value = payload.makeValue();
  auto document = encodeReply(value.get());
  if (document == nullptr) fail(payload, "no document");
  const auto result = decodeReply(document.get());
  if (VXMethodResultIsFault(result.get())) fail(payload, "decodes to a fault");
  if (!BQEqual(BQDictionaryGetValue(result.get(), kVXMethodInvocationResult), value.get())) {
    fail(payload, "decodes to another value");
  }
  return document;
}

std::string_view bytesOf(const BQData* data) {
  return {reinterpret_cast<const char*>(BQDataGetBytePtr(data)), static_cast<size_t>(BQDataGetLength(data))};
}

}  // namespace bench
