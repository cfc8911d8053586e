#include "RequestDocument.h"

#include <BQ/BQData.h>
#include <VX/VXProtocolHandler.h>

#include "Endpoint.h"
#include "Parameters.h"
#include "Properties.h"
#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {

std::string makeRequestDocument(const Options& options) {
  parseEndpoint(options.url);
  Parameters parameters = parseParameters(options.parameters);
  auto handler =
      Ref<OpaqueVXProtocolHandlerRef>::adopt(VXProtocolHandlerCreate(nullptr, protocolOf(options)));
  setDocumentProperties(options, [&](const BQString* key, BQTypeRef value) {
    VXProtocolHandlerSetProperty(handler.get(), key, value);
  });
  auto document = Ref<const BQData>::adopt(
      VXProtocolHandlerCopyRequestDocument(handler.get(), makeString(options.method).get(),
                                           parameters.values.get(), parameters.order.get(), nullptr));
  if (!document) throw UsageError("no request document can be made of these parameters");
  return {reinterpret_cast<const char*>(BQDataGetBytePtr(document.get())),
          static_cast<size_t>(BQDataGetLength(document.get()))};
}

}  // namespace tools::vxcall
