#include "Invocation.h"

#include <utility>

#include <VX/VXConstants.h>

#include "Doubt.h"
#include "Endpoint.h"
#include "Loss.h"
#include "Parameters.h"
#include "Properties.h"
#include "SavedInvocation.h"
#include "common/Text.h"

namespace tools::vxcall {
namespace {

const BQString* protocolNamed(const std::string& name) {
  if (name == "soap-1999") return kVXSOAP1999Protocol;
  if (name == "soap-2001") return kVXSOAP2001Protocol;
  return kVXXMLRPCProtocol;
}

Invocation describeInvocation(const Options& options) {
  BQRef<const BQURL> url = parseEndpoint(options.url);
  Invocation invocation{{}, protocolNamed(options.protocol), options.url, makeString(options.method)};
  invocation.handle =
      BQAdopt(VXMethodInvocationCreate(url.get(), invocation.method.get(), invocation.protocol));
  Parameters parameters = parseParameters(options.parameters);
  VXMethodInvocationSetParameters(invocation.handle.get(), parameters.values.get(), parameters.order.get());
  invocation.notes = std::move(parameters.notes);
  return invocation;
}

void addNotes(Invocation& invocation, const std::vector<std::string>& notes) {
  invocation.notes.insert(invocation.notes.end(), notes.begin(), notes.end());
}

}  // namespace

Invocation makeInvocation(const Options& options) {
  Invocation invocation = options.load ? loadInvocation(*options.load) : describeInvocation(options);
  /* A file keeps all of a value; what is lost is told when it is loaded. */
  if (!options.save) addNotes(invocation, describeLosses(invocation));
  addNotes(invocation, doubtOptions(options, invocation.protocol));
  setProperties(options, [&invocation](const BQString* key, BQTypeRef value) {
    VXMethodInvocationSetProperty(invocation.handle.get(), key, value);
  });
  return invocation;
}

}  // namespace tools::vxcall
