#include <algorithm>
#include <charconv>
#include <string_view>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "diag/Log.h"
#include "diag/Switches.h"
#include "diag/TreeDump.h"
#include "soap/SOAPProtocolHandler.h"
#include "soap/SOAPValueReader.h"
#include "transport/WebServiceResult.h"
#include "values/AutoArray.h"
#include "values/AutoString.h"
#include "values/DictIterator.h"
#include "xml/ElementWalk.h"
#include "xml/Parsing.h"
#include "xml/SOAPNamespaces.h"
#include "xml/Text.h"
#include "xml/TreeAccess.h"

namespace vx {
namespace {

constexpr BQStreamError kUnusableReply = {kVXErrorDomainReply, kVXErrorUnusableReply};

/* What the handlers of a reply share. */
struct SOAPReplyContext {
  SOAPProtocolHandler* handler;
  const BQString* methodName;
  WebServiceResult* result;
  ReferenceBudget budget{};
  SOAPValueReader* reader = nullptr; /* of the Body that is being read */
};

SOAPReplyContext& contextOf(void* context) {
  return *static_cast<SOAPReplyContext*>(context);
}

void logEntry(const char* text) {
  if (gVXDebugVerbose != 0) _vxLogf(text);
}

/* The number at the start of a text as a 32-bit integer, clamped to its range; 0 if there is none. */
long integerAtStart(std::string_view text) {
  size_t start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string_view::npos) return 0;
  text.remove_prefix(start);
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  int32_t value = 0;
  auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) return text.starts_with('-') ? INT32_MIN : INT32_MAX;
  return value;
}

const BQString* _parseFaultCode(const BQTree* tree, const BQXMLNode*, NamespaceMap&, void* context) {
  const BQTree* child = BQTreeGetFirstChild(tree);
  if (child == nullptr) return BQSTR("Can't parse <faultcode>");
  long code = integerAtStart(textOf(child));
  *static_cast<long*>(context) = code == 0 ? -1 : code;
  return nullptr;
}

const BQString* _parseFaultString(const BQTree* tree, const BQXMLNode*, NamespaceMap&, void* context) {
  const BQTree* child = BQTreeGetFirstChild(tree);
  if (child == nullptr) return BQSTR("Can't parse <faultstring>");
  static_cast<AutoString*>(context)->setString(own(copyXMLStringFromTree(child)).get());
  return nullptr;
}

const BQString* _parseFault(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces, void* context) {
  logEntry("in _parseFault\n");
  long code = 0;
  AutoString text;
  const BQString* codeName = BQSTR("faultcode");
  const BQString* stringName = BQSTR("faultstring");
  const XMLElementInterrogator table[] = {
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, codeName, _parseFaultCode, &code},
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, stringName, _parseFaultString, &text},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, codeName, _parseFaultCode, &code},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, stringName, _parseFaultString, &text},
      {nullptr, codeName, _parseFaultCode, &code},
      {nullptr, stringName, _parseFaultString, &text},
  };
  auto message = own(xmlInterrogateElements(tree, namespaces, table, std::ssize(table), nullptr));
  if (message != nullptr) {
    code = kVXErrorUnusableReply;
    text.setString(message.get());
  }
  if (text.isEmpty()) text.setString(BQSTR("Server Fault"));
  contextOf(context).result->becomeFault(text.get(), code, nullptr, 0);
  return nullptr;
}

/* Puts the return value in its place: one output, or all of them. */
void storeResult(const SOAPReplyContext& context, const BQDictionary* outputs) {
  BQTypeRef name =
      context.handler->getPropertyOfType(kVXMethodInvocationResultParameterName, BQStringGetTypeID());
  BQTypeRef value = name == nullptr ? outputs : BQDictionaryGetValue(outputs, name);
  if (value != nullptr) {
    BQDictionarySetValue(context.result->resultDictionary.get(), kVXMethodInvocationResult, value);
    return;
  }
  auto message =
      own(BQStringCreateWithFormat(BQSTR("Can't find method result parameter '%@' in reply"), name));
  context.result->becomeFault(message.get(), kUnusableReply);
}

const BQString* _parseMethodReply(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces,
                                  void* context) {
  logEntry("in _parseMethodReply\n");
  SOAPReplyContext& reply = contextOf(context);
  SOAPValueReader& reader = *reply.reader;
  auto outputs = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  for (const BQTree* child = BQTreeGetFirstChild(tree); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    auto value = reader.parseSOAPType(child, namespaces);
    auto name = reader.copyName(child);
    if (auto error = own(reader.takeError())) {
      reply.result->becomeFault(error.get(), kUnusableReply);
      return nullptr;
    }
    BQDictionarySetValue(outputs.get(), name.get(), value.get());
  }
  storeResult(reply, outputs.get());
  for (DictIterator entries(outputs.get()); entries.hasNext();) {
    BQTypeRef name = entries.nextKey();
    BQDictionarySetValue(reply.result->resultDictionary.get(), name, entries.valueFor(name));
  }
  return nullptr;
}

const BQString* _parseSOAPBody(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces,
                               void* context) {
  logEntry("in _parseSOAPBody\n");
  SOAPReplyContext& reply = contextOf(context);
  SOAPValueReader reader(tree, reply.handler, &reply.budget);
  reply.reader = &reader;
  const BQString* methodNamespace = reply.handler->methodNamespace();
  const BQString* name = reply.methodName;
  auto responseName = own(BQStringCreateWithFormat(BQSTR("%@Response"), name));
  const XMLElementInterrogator table[] = {
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, BQSTR("Fault"), _parseFault, context},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, BQSTR("Fault"), _parseFault, context},
      {methodNamespace, responseName.get(), _parseMethodReply, context},
      {methodNamespace, name, _parseMethodReply, context},
      {nullptr, responseName.get(), _parseMethodReply, context},
      {nullptr, name, _parseMethodReply, context},
  };
  return xmlInterrogateElements(tree, namespaces, table, std::ssize(table), nullptr);
}

const BQString* _parseSOAPHeader(const BQTree* tree, const BQXMLNode*, NamespaceMap&, void* context) {
  logEntry("in _parseSOAPHeader\n");
  AutoArray entries;
  for (const BQTree* child = BQTreeGetFirstChild(tree); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    entries.appendValue(child);
  }
  if (!entries.isEmpty()) {
    BQDictionarySetValue(contextOf(context).result->resultDictionary.get(), kVXSOAPMessageHeaders,
                         entries.getImmutableArray());
  }
  return nullptr;
}

const BQString* _parseSOAPEnvelope(const BQTree* tree, const BQXMLNode*, NamespaceMap& namespaces,
                                   void* context) {
  logEntry("in _parseSOAPEnvelope\n");
  const XMLElementInterrogator table[] = {
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, BQSTR("Header"), _parseSOAPHeader, context},
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, BQSTR("Body"), _parseSOAPBody, context},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, BQSTR("Header"), _parseSOAPHeader, context},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, BQSTR("Body"), _parseSOAPBody, context},
  };
  return xmlInterrogateElements(tree, namespaces, table, std::ssize(table), nullptr);
}

}  // namespace

void SOAPProtocolHandler::parseReply(WebServiceResult* result, const BQString* methodName,
                                     const BQTree* tree) {
  if (gVXDebugVerbose != 0) dumpXMLTree(tree, 0);
  SOAPReplyContext context = {this, methodName, result};
  const XMLElementInterrogator table[] = {
      {VX_SOAP_1999_ENVELOPE_NAMESPACE, BQSTR("Envelope"), _parseSOAPEnvelope, &context},
      {VX_SOAP_2001_ENVELOPE_NAMESPACE, BQSTR("Envelope"), _parseSOAPEnvelope, &context},
  };
  NamespaceMap namespaces = topNamespaces(tree);
  own(xmlInterrogateElements(tree, namespaces, table, std::ssize(table), nullptr));
}

const BQDictionary* SOAPProtocolHandler::parseReplyData(const BQString* methodName, const BQData* data,
                                                        unsigned long encoding, const BQString** outError) {
  WebServiceResult result;
  const BQString* error = nullptr;
  auto tree = own(parseXML(data, 1, encoding, &error));
  auto ownedError = own(error);
  if (tree != nullptr) {
    parseReply(&result, methodName, tree.get());
    tree = {}; /* gives its memory to the copy below */
  } else {
    result.becomeFault(error != nullptr ? error : BQSTR("Could not parse XML."), kUnusableReply);
  }
  if (outError != nullptr) *outError = ownedError.release();
  return BQDictionaryCreateCopy(result.resultDictionary.get());
}

}  // namespace vx
