#include <string_view>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "soap/SOAPProtocolHandler.h"
#include "soap/SOAPValueWriter.h"
#include "xml/Kinds.h"
#include "xml/Text.h"

namespace vx {
namespace {

void openEnvelope(XMLBuffer& buffer, const Generation& generation) {
  std::string_view encoding = textOf(generation.encodingNamespace);
  std::string_view envelope = textOf(generation.envelopeNamespace);
  buffer.addLine(1, {"<SOAP-ENV:Envelope"});
  buffer.addLine(2, {"xmlns:xsd=\"", textOf(generation.schemaNamespace), "\""});
  buffer.addLine(2, {"xmlns:xsi=\"", textOf(generation.schemaInstanceNamespace), "\""});
  if (generation.declaresEncodingFirst) buffer.addLine(2, {"xmlns:SOAP-ENC=\"", encoding, "\""});
  buffer.addLine(2, {"SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\""});
  if (generation.declaresEncodingFirst) {
    buffer.addLine(2, {"xmlns:SOAP-ENV=\"", envelope, "\">"});
  } else {
    buffer.addLine(2, {"xmlns:SOAP-ENV=\"", envelope, "\""});
    buffer.addLine(2, {"xmlns:SOAP-ENC=\"", encoding, "\">"});
  }
}

void closeBody(XMLBuffer& buffer) {
  buffer.addLine(3, {"</SOAP-ENV:Body>"});
  buffer.addLine(1, {"</SOAP-ENV:Envelope>"});
}

unsigned long encodingOf(const BQDictionary* request) {
  return static_cast<uint32_t>(getDictNumber(request, kVXRequestTextEncoding, kDefaultEncoding));
}

}  // namespace

void SOAPProtocolHandler::serialize(XMLBuffer* buffer, int level, const BQString* name, const void* value) {
  if (generation_ != nullptr) SOAPValueWriter(buffer, this, generation_).write(level, textOf(name), value);
}

void SOAPProtocolHandler::writeHeader(XMLBuffer* buffer) {
  BQTypeRef header = getProperty(kVXSOAPMessageHeaders);
  if (header == nullptr) return;
  bool isString = BQGetTypeID(header) == BQStringGetTypeID();
  if (!isString && BQGetTypeID(header) != BQArrayGetTypeID()) {
    return buffer->addLine(4, {"<!-- kVXHTTPExtraHeaders requires a BQString or BQArray -->"});
  }
  buffer->addLine(3, {"<SOAP-ENV:Header>"});
  if (isString) {
    buffer->addLine(4, {textOf(static_cast<const BQString*>(header))});
  } else {
    auto* elements = static_cast<const BQArray*>(header);
    for (BQIndex i = 0; i < BQArrayGetCount(elements); ++i) {
      buffer->addTo(4, "%@", BQArrayGetValueAtIndex(elements, i));
    }
  }
  buffer->addLine(3, {"</SOAP-ENV:Header>"});
}

const BQData* SOAPProtocolHandler::createRequest(const BQString* methodName, const BQDictionary* parameters,
                                                 const BQArray* parameterOrder, const BQDictionary*) {
  if (generation_ == nullptr || methodName == nullptr) return nullptr;
  bool isDocument = generation_->hasDocumentForm && getProperty(kVXSOAPBodyEncodingStyle) != kVXSOAPStyleRPC;
  std::string_view name = textOf(methodName);
  std::string_view uri = textOf(methodNamespace());
  XMLBuffer buffer(kDefaultEncoding);
  openEnvelope(buffer, *generation_);
  writeHeader(&buffer);
  buffer.addLine(3, {"<SOAP-ENV:Body>"});
  if (isDocument) {
    buffer.addLine(4, {"<", name, " xmlns=\"", uri, "\">"});
  } else {
    buffer.addLine(4, {"<m:", name, " xmlns:m=\"", uri, "\">"});
  }
  SOAPValueWriter writer(&buffer, this, generation_);
  for (BQIndex i = 0; i < BQArrayGetCount(parameterOrder); ++i) {
    BQTypeRef parameter = BQArrayGetValueAtIndex(parameterOrder, i);
    writer.writeNamed(5, parameter, BQDictionaryGetValue(parameters, parameter));
  }
  buffer.addLine(4, {isDocument ? "</" : "</m:", name, ">"});
  closeBody(buffer);
  return buffer.copyData();
}

const BQData* SOAPProtocolHandler::createReply(const BQDictionary* request, const void* result) {
  BQTypeRef methodName = BQDictionaryGetValue(request, kVXRequestMethodName);
  if (generation_ == nullptr || methodName == nullptr) return nullptr;
  auto name = own(BQCopyDescription(methodName));
  BQTypeRef namespaceEntry = BQDictionaryGetValue(request, kVXSOAPMethodNamespaceURI);
  XMLBuffer buffer(encodingOf(request));
  openEnvelope(buffer, *generation_);
  buffer.addLine(3, {"<SOAP-ENV:Body>"});
  if (namespaceEntry != nullptr) {
    auto uri = own(BQCopyDescription(namespaceEntry));
    buffer.addLine(4, {"<m:", textOf(name.get()), "Response xmlns:m=\"", textOf(uri.get()), "\">"});
  } else {
    buffer.addLine(4, {"<", textOf(name.get()), "Response>"});
  }
  serialize(&buffer, 5, BQSTR("Result"), result);
  buffer.addLine(4, {namespaceEntry != nullptr ? "</m:" : "</", textOf(name.get()), "Response>"});
  closeBody(buffer);
  return buffer.copyData();
}

const BQData* SOAPProtocolHandler::createFault(const BQDictionary* request, const BQDictionary* fault) {
  if (generation_ == nullptr) return nullptr;
  BQTypeRef faultString = BQDictionaryGetValue(fault, kVXFaultString);
  XMLBuffer buffer(encodingOf(request));
  openEnvelope(buffer, *generation_);
  buffer.addLine(3, {"<SOAP-ENV:Body>"});
  buffer.addLine(4, {"<SOAP-ENV:Fault>"});
  buffer.addLine(5, {"<faultcode>SOAP-ENV:Client</faultcode>"});
  buffer.addTo(5, "<faultstring>%@</faultstring>",
               faultString != nullptr ? faultString : BQSTR("Unknown Fault"));
  buffer.addLine(4, {"</SOAP-ENV:Fault>"});
  closeBody(buffer);
  return buffer.copyData();
}

}  // namespace vx
