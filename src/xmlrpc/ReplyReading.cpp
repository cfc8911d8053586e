#include <cstdio>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "diag/Switches.h"
#include "diag/TreeDump.h"
#include "transport/WebServiceResult.h"
#include "xml/Parsing.h"
#include "xml/TreeAccess.h"
#include "xmlrpc/ValueReader.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace vx {
namespace {

/* The reader's message if it has one, else the given one; owned. */
Owned<const BQString> messageOr(ValueReader& reader, const BQString* message) {
  const BQString* error = reader.takeError();
  return own(error != nullptr ? error : message);
}

/* The fault code as a 32-bit integer: -1 if it is no number, 0 if it does not fit. */
int32_t faultCodeOf(const BQDictionary* fault) {
  BQTypeRef code = BQDictionaryGetValue(fault, BQSTR("faultCode"));
  if (BQGetTypeID(code) != BQNumberGetTypeID()) return -1;
  int32_t value = 0;
  return BQNumberGetValue(static_cast<const BQNumber*>(code), kBQNumberSInt32Type, &value) ? value : 0;
}

/* Each of these reads one part of a reply into the result and returns a message if it cannot. */

Owned<const BQString> readFault(WebServiceResult* result, const BQTree* fault) {
  const BQTree* value = BQTreeGetFirstChild(fault);
  if (value == nullptr) return own(BQSTR("<fault> must contain a <value>"));
  ValueReader reader;
  auto read = reader.read(value);
  auto* members = static_cast<const BQDictionary*>(read.get());
  if (BQGetTypeID(members) != BQDictionaryGetTypeID() || BQDictionaryGetCount(members) == 0) {
    return messageOr(reader, BQSTR("Can't parse <fault>."));
  }
  BQDictionarySetValue(result->resultDictionary.get(), kResultIsFault, kBQBooleanTrue);
  result->addNumberToResult(kVXFaultCode, faultCodeOf(members));
  BQDictionarySetValue(result->resultDictionary.get(), kVXFaultString,
                       BQDictionaryGetValue(members, BQSTR("faultString")));
  return nullptr;
}

Owned<const BQString> readParams(WebServiceResult* result, const BQTree* params) {
  const BQTree* param = BQTreeGetFirstChild(params);
  if (param == nullptr) return own(BQSTR("<params> must contain a single <param> entry"));
  const BQTree* value = BQTreeGetFirstChild(param);
  if (value == nullptr) return own(BQSTR("<param> must contain a single <value> entry"));
  ValueReader reader;
  auto read = reader.read(value);
  BQDictionarySetValue(result->resultDictionary.get(), kVXMethodInvocationResult, read.get());
  return own(reader.takeError());
}

Owned<const BQString> readResponse(WebServiceResult* result, const BQTree* tree) {
  const BQTree* response = findNamedElement(tree, BQSTR("methodResponse"));
  if (response == nullptr) return own(BQSTR("Can't find a 'methodResponse' element"));
  const BQTree* child = BQTreeGetFirstChild(response);
  if (child == nullptr) return own(BQSTR("Can't find any child of the 'methodResponse' element"));
  const BQString* name = getElementName(child);
  if (BQStringEqualsIgnoringCase(name, BQSTR("fault"))) return readFault(result, child);
  if (BQStringEqualsIgnoringCase(name, BQSTR("params"))) return readParams(result, child);
  return own(BQSTR("Child of the 'methodResponse' must be <fault> or <params>"));
}

constexpr BQStreamError kUnusableReply = {kVXErrorDomainReply, kVXErrorUnusableReply};

}  // namespace

void XMLRPCProtocolHandler::parseReply(WebServiceResult* result, const BQTree* tree) {
  if (gVXDebugVerbose != 0) {
    std::fputs("XMLRPCWebServiceMethodInvocation::parseReply: reply tree\n", stderr);
    dumpXMLTree(tree, 0);
  }
  auto message = readResponse(result, tree);
  if (message != nullptr) result->becomeFault(message.get(), kUnusableReply);
}

const BQDictionary* XMLRPCProtocolHandler::parseReplyData(const BQString*, const BQData* data,
                                                          unsigned long encoding, const BQString** outError) {
  WebServiceResult result;
  const BQString* error = nullptr;
  auto tree = own(parseXML(data, 1, encoding, &error));
  auto ownedError = own(error);
  if (tree != nullptr) {
    parseReply(&result, tree.get());
  } else {
    result.becomeFault(error != nullptr ? error : BQSTR("Could not parse XML."), kUnusableReply);
  }
  if (outError != nullptr) *outError = ownedError.release();
  return BQDictionaryCreateCopy(result.resultDictionary.get());
}

}  // namespace vx
