/* Reads and writes the documents of SOAP 1.1. */
#ifndef VX_SOAP_SOAP_PROTOCOL_HANDLER_H
#define VX_SOAP_SOAP_PROTOCOL_HANDLER_H

#include "api/base/VXProtocolHandler.h"

namespace vx {

class SOAPProtocolHandler : public VXProtocolHandler {
 public:
  /* One of the two SOAP constants, which selects the schema generation. */
  explicit SOAPProtocolHandler(const BQString* protocol);

  const BQData* createRequest(const BQString* methodName, const BQDictionary* parameters,
                              const BQArray* parameterOrder, const BQDictionary* options) override;
  const BQDictionary* parsePostData(const BQData* data, unsigned long encoding,
                                    const BQString** outError) override;
  const BQDictionary* parseReplyData(const BQString* methodName, const BQData* data, unsigned long encoding,
                                     const BQString** outError) override;
  const BQData* createReply(const BQDictionary* request, const void* result) override;
  const BQData* createFault(const BQDictionary* request, const BQDictionary* fault) override;

 private:
  Owned<const BQString> protocol_;
};

}  // namespace vx

#endif
