/* Reads and writes the documents of SOAP 1.1. */
#ifndef VX_SOAP_SOAP_PROTOCOL_HANDLER_H
#define VX_SOAP_SOAP_PROTOCOL_HANDLER_H

#include "api/base/VXProtocolHandler.h"
#include "soap/Generation.h"
#include "xml/NamespaceMap.h"
#include "xml/XMLBuffer.h"

namespace vx {

class WebServiceResult;

class SOAPProtocolHandler : public VXProtocolHandler {
 public:
  /* One of the two SOAP constants, which selects the schema generation; any other makes no documents. */
  explicit SOAPProtocolHandler(const BQString* protocol);

  const BQData* createRequest(const BQString* methodName, const BQDictionary* parameters,
                              const BQArray* parameterOrder, const BQDictionary* options) override;
  const BQDictionary* parsePostData(const BQData* data, unsigned long encoding,
                                    const BQString** outError) override;
  const BQDictionary* parseReplyData(const BQString* methodName, const BQData* data, unsigned long encoding,
                                     const BQString** outError) override;
  const BQData* createReply(const BQDictionary* request, const void* result) override;
  const BQData* createFault(const BQDictionary* request, const BQDictionary* fault) override;

  /* Appends the element of a value (may be null) under a name. */
  void serialize(XMLBuffer* buffer, int level, const BQString* name, const void* value);

  /* Fills a result from the tree of a reply to a method. */
  void parseReply(WebServiceResult* result, const BQString* methodName, const BQTree* tree);

  /* The schema type of array items, and of dates; borrowed. */
  const BQString* heterogeneousArrayTypeName() const;
  const BQString* dateTimeEncoding() const;

  /* The namespace of method elements: the property's, or the placeholder. Borrowed. */
  const BQString* methodNamespace();

 private:
  /* The namespaces in force at the top of a document. */
  NamespaceMap topNamespaces(const BQTree* tree);
  void writeHeader(XMLBuffer* buffer);

  Owned<const BQString> protocol;
  const Generation* generation_; /* null if the protocol is none of SOAP's */
};

}  // namespace vx

#endif
