#include <utility>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "values/AutoArray.h"
#include "values/AutoDict.h"
#include "values/AutoScalar.h"
#include "values/AutoString.h"
#include "xml/ElementWalk.h"
#include "xml/Parsing.h"
#include "xml/TreeAccess.h"
#include "xmlrpc/ValueReader.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace vx {
namespace {

/* Collects the parameters of a request, which have no names of their own. */
struct ParamContext {
  AutoDict* parameters;
  int32_t counter = 0;

  void addParam(const void* value) {
    AutoString name("anon%d", counter++);
    parameters->addValue(name.get(), value);
  }
};

const BQString* _parseOneValue(const BQTree* tree, const BQXMLNode*, NamespaceMap&, void* context) {
  const BQString* error = nullptr;
  auto value = own(parseType(tree, &error));
  if (value != nullptr) static_cast<ParamContext*>(context)->addParam(value.get());
  return error;
}

const BQString* _parseOneParam(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces,
                               void* context) {
  const XMLElementInterrogator table[] = {{nullptr, BQSTR("value"), _parseOneValue, context}};
  return xmlInterrogateElements(tree, namespaces, table, std::ssize(table), nullptr);
}

const BQString* _parseParams(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces, void* context) {
  ParamContext parameters{static_cast<AutoDict*>(context)};
  const XMLElementInterrogator table[] = {{nullptr, BQSTR("param"), _parseOneParam, &parameters}};
  return xmlInterrogateElements(tree, namespaces, table, std::ssize(table), nullptr);
}

const BQString* _parseString(const BQTree* tree, const BQXMLNode*, NamespaceMap&, void* context) {
  const BQTree* text = BQTreeGetFirstChild(tree);
  if (text == nullptr) return BQSTR("Can't parse string");
  static_cast<AutoString*>(context)->setString(own(copyXMLStringFromTree(text)).get());
  return nullptr;
}

Owned<const BQArray> makeParameterOrder(BQIndex count) {
  auto order = own(BQArrayCreateMutable(count));
  for (int32_t i = 0; i < count; ++i) {
    AutoString name("anon%d", i);
    BQArrayAppendValue(order.get(), name.get());
  }
  return order;
}

const BQString* _parseMethodCall(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces,
                                 void* context) {
  AutoString name;
  AutoDict parameters;
  const XMLElementInterrogator table[] = {{nullptr, BQSTR("methodName"), _parseString, &name},
                                          {nullptr, BQSTR("params"), _parseParams, &parameters}};
  const BQString* message = xmlInterrogateElements(tree, namespaces, table, std::ssize(table), nullptr);
  if (message != nullptr) return message;
  if (name.isEmpty()) return BQSTR("<methodName> missing for request");
  auto* request = static_cast<AutoDict*>(context);
  request->addValue(kVXRequestMethodName, name.get());
  request->addValue(kVXRequestParameters, parameters.getMutableDict());
  request->addValue(kVXRequestParameterOrder, makeParameterOrder(parameters.getCount()).get());
  return nullptr;
}

}  // namespace

const BQDictionary* XMLRPCProtocolHandler::parsePostData(const BQData* data, unsigned long encoding,
                                                         const BQString** outError) {
  const BQString* error = nullptr;
  if (outError == nullptr) outError = &error;
  AutoDict request;
  AutoScalar encodingNumber(static_cast<long>(encoding));
  request.addValue(kVXRequestTextEncoding, encodingNumber.getRef());
  auto tree = own(parseXML(data, 1, encoding, outError));
  if (tree != nullptr) {
    AutoArray extensions;
    NamespaceMap namespaces;
    const XMLElementInterrogator table[] = {{nullptr, BQSTR("methodCall"), _parseMethodCall, &request}};
    *outError = xmlInterrogateElements(tree.get(), namespaces, table, std::ssize(table),
                                       extensions.getMutableArray());
    if (!extensions.isEmpty())
      request.addValue(BQSTR("/VXXMLRPCTopLevelExtensions"), extensions.getImmutableArray());
  }
  auto ownedError = own(error);
  if (*outError != nullptr) return nullptr;
  return BQDictionaryCreateCopy(request.getImmutableDict());
}

}  // namespace vx
