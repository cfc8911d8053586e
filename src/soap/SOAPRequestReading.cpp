#include <iterator>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "diag/Log.h"
#include "diag/Switches.h"
#include "soap/SOAPProtocolHandler.h"
#include "soap/SOAPValueReader.h"
#include "values/AutoDict.h"
#include "xml/ElementWalk.h"
#include "xml/Parsing.h"
#include "xml/QualifiedName.h"
#include "xml/SOAPNamespaces.h"
#include "xml/TreeAccess.h"

namespace vx {
namespace {

/* What the handlers of a request share. */
struct SOAPRequestContext {
  SOAPProtocolHandler* handler;
  AutoDict* request;
  ReferenceBudget budget{};
};

SOAPRequestContext& contextOf(void* context) {
  return *static_cast<SOAPRequestContext*>(context);
}

void logEntry(const char* text) {
  if (gVXDebugVerbose != 0) _vxLogf(text);
}

/* Reads the parameters of a method element whose namespaces are given; a message if one cannot be read. */
const BQString* readParameters(SOAPRequestContext& context, const BQTree* body, const BQTree* method,
                               NamespaceMap& namespaces) {
  SOAPValueReader reader(body, context.handler, &context.budget);
  auto parameters = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  auto order = own(BQArrayCreateMutable(0));
  for (const BQTree* child = BQTreeGetFirstChild(method); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    auto value = reader.parseParameter(child, namespaces);
    auto name = reader.copyName(child);
    if (const BQString* error = reader.takeError()) return error;
    BQDictionarySetValue(parameters.get(), name.get(), value.get());
    BQArrayAppendValue(order.get(), name.get());
  }
  context.request->addValue(kVXRequestParameters, parameters.get());
  context.request->addValue(kVXRequestParameterOrder, order.get());
  return nullptr;
}

const BQString* _parseReqSOAPBody(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces,
                                  void* context) {
  logEntry("in _parseReqSOAPBody\n");
  SOAPRequestContext& request = contextOf(context);
  const BQTree* method = BQTreeGetFirstChild(tree);
  if (method == nullptr) return BQSTR("Body missing method");
  NamespaceMap::Scope scope(namespaces);
  xmlGetElementNamespaces(method, &namespaces);
  const BQString* uri = nullptr;
  const BQString* local = nullptr;
  xmlNamespaceQualify(namespaces, getElementName(method), &uri, &local);
  auto ownedURI = own(uri);
  auto ownedLocal = own(local);
  request.request->addValue(kVXRequestMethodName, local);
  request.request->addValue(kVXSOAPMethodNamespaceURI, uri);
  return readParameters(request, tree, method, namespaces);
}

const BQString* _parseReqSOAPHeader(const BQTree* tree, const BQXMLNode*, NamespaceMap&, void* context) {
  logEntry("in _parseReqSOAPHeader\n");
  contextOf(context).request->addValue(kVXSOAPMessageHeaders, tree);
  return nullptr;
}

const BQString* _parseReqSOAPEnvelope(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces,
                                      void* context) {
  logEntry("in _parseReqSOAPEnvelope\n");
  const XMLElementInterrogator table[] = {
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, BQSTR("Header"), _parseReqSOAPHeader, context},
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, BQSTR("Body"), _parseReqSOAPBody, context},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, BQSTR("Header"), _parseReqSOAPHeader, context},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, BQSTR("Body"), _parseReqSOAPBody, context},
  };
  return xmlInterrogateElements(tree, namespaces, table, std::ssize(table), nullptr);
}

}  // namespace

const BQDictionary* SOAPProtocolHandler::parsePostData(const BQData* data, unsigned long encoding,
                                                       const BQString** outError) {
  const BQString* error = nullptr;
  auto tree = own(parseXML(data, 1, encoding, &error));
  auto ownedError = own(error);
  if (outError != nullptr) *outError = ownedError.release();
  if (tree == nullptr) return nullptr;
  AutoDict request;
  SOAPRequestContext context = {this, &request};
  const XMLElementInterrogator table[] = {
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, BQSTR("Envelope"), _parseReqSOAPEnvelope, &context},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, BQSTR("Envelope"), _parseReqSOAPEnvelope, &context},
  };
  NamespaceMap namespaces = topNamespaces(tree.get());
  auto message = own(xmlInterrogateElements(tree.get(), namespaces, table, std::ssize(table), nullptr));
  if (message == nullptr) return BQDictionaryCreateCopy(request.getImmutableDict());
  if (gVXDebug != 0) vxPrintf(BQSTR("#### Parse Post Error: %@"), onOneLine(message.get()).get());
  return nullptr;
}

}  // namespace vx
