/* Reads and writes the documents of XML-RPC. */
#ifndef VX_XMLRPC_XMLRPC_PROTOCOL_HANDLER_H
#define VX_XMLRPC_XMLRPC_PROTOCOL_HANDLER_H

#include "api/base/VXProtocolHandler.h"
#include "xml/XMLBuffer.h"

namespace vx {

class WebServiceResult;

class XMLRPCProtocolHandler : public VXProtocolHandler {
 public:
  const BQData* createRequest(const BQString* methodName, const BQDictionary* params,
                              const BQArray* parameterOrder, const BQDictionary* options) override;
  const BQDictionary* parsePostData(const BQData* data, unsigned long encoding,
                                    const BQString** outError) override;
  const BQDictionary* parseReplyData(const BQString* methodName, const BQData* data, unsigned long encoding,
                                     const BQString** outError) override;
  const BQData* createReply(const BQDictionary* request, const void* result) override;
  const BQData* createFault(const BQDictionary* request, const BQDictionary* fault) override;

  /* Appends the value element of a value (may be null), its first and last line at `level`. */
  void serialize(XMLBuffer* buffer, int level, const void* value);

  /* Fills a result from the tree of a reply. */
  void parseReply(WebServiceResult* result, const BQTree* tree);
};

}  // namespace vx

#endif
