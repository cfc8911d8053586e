#include "RequestDocument.h"

#include <BQ/BQData.h>
#include <VX/VXConstants.h>
#include <VX/VXProtocolHandler.h>

#include "common/Value.h"

namespace tools::vxcall {
namespace {

using Handler = BQRef<OpaqueVXProtocolHandlerRef>;

/* A handler that writes as the invocation does. */
Handler makeHandler(const Invocation& invocation) {
  auto handler = BQAdopt(VXProtocolHandlerCreate(nullptr, invocation.protocol));
  for (const BQString* key : {kVXSOAPMethodNamespaceURI, kVXSOAPBodyEncodingStyle, kVXSOAPMessageHeaders}) {
    auto value = Value::adopt(VXMethodInvocationCopyProperty(invocation.handle.get(), key));
    VXProtocolHandlerSetProperty(handler.get(), key, value.get());
  }
  return handler;
}

}  // namespace

std::optional<std::string> makeRequestDocument(const Invocation& invocation) {
  const BQArray* order = nullptr;
  auto values = BQAdopt(VXMethodInvocationCopyParameters(invocation.handle.get(), &order));
  auto ownedOrder = BQAdopt(order);
  auto document = BQAdopt(VXProtocolHandlerCopyRequestDocument(
      makeHandler(invocation).get(), invocation.method.get(), values.get(), order, nullptr));
  if (!document) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(BQDataGetBytePtr(document.get())),
                     static_cast<size_t>(BQDataGetLength(document.get())));
}

}  // namespace tools::vxcall
