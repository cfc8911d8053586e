#include "SavedInvocation.h"

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "Endpoint.h"
#include "InputFile.h"
#include "common/Text.h"
#include "common/UsageError.h"
#include "common/Value.h"

namespace tools::vxcall {
namespace {

/* The library knows the style by the object, not by the text that a file has. */
void restoreStyle(VXMethodInvocationRef invocation) {
  auto style = Value::adopt(VXMethodInvocationCopyProperty(invocation, kVXSOAPBodyEncodingStyle));
  if (!BQEqual(style.get(), kVXSOAPStyleRPC)) return;
  VXMethodInvocationSetProperty(invocation, kVXSOAPBodyEncodingStyle, kVXSOAPStyleRPC);
}

/* The library's constant for the protocol that a file names, which it has made sure of. */
const BQString* protocolNamed(std::string_view name) {
  for (const BQString* protocol : {kVXSOAP1999Protocol, kVXSOAP2001Protocol}) {
    if (name == textOf(protocol)) return protocol;
  }
  return kVXXMLRPCProtocol;
}

}  // namespace

Invocation loadInvocation(const std::string& path) {
  std::string bytes = readInput(path);
  auto data = BQAdopt(BQDataCreate(bytes.data(), static_cast<BQIndex>(bytes.size())));
  auto handle = BQAdopt(VXMethodInvocationCreateFromSerialization(data.get()));
  /* The library does not tell the endpoint and the method of an invocation. */
  auto list = Value::adopt(BQPropertyListCreateFromXMLData(data.get(), nullptr));
  auto entry = [&](const BQString* key) {
    return handle ? textOf(BQDictionaryGetValue(static_cast<const BQDictionary*>(list.get()), key))
                  : std::string_view();
  };
  Invocation invocation{handle, protocolNamed(entry(BQSTR("ProtocolType"))),
                        std::string(entry(BQSTR("ServiceURL"))), makeString(entry(BQSTR("MethodName")))};
  if (invocation.url.empty() || BQStringGetLength(invocation.method.get()) == 0) {
    throw UsageError(nameOfInput(path) + " holds no saved call; --save makes one");
  }
  parseEndpoint(invocation.url);
  restoreStyle(handle.get());
  return invocation;
}

std::string serializeInvocation(const Invocation& invocation) {
  auto data = BQAdopt(VXMethodInvocationCopySerialization(invocation.handle.get()));
  if (!data) {
    throw UsageError(
        "the call cannot be saved: a file has no room for null in an array or object, nor for control "
        "characters in a text");
  }
  return {reinterpret_cast<const char*>(BQDataGetBytePtr(data.get())),
          static_cast<size_t>(BQDataGetLength(data.get()))};
}

}  // namespace tools::vxcall
