/* Reads and writes the documents of a protocol. */
#ifndef VX_API_BASE_VX_PROTOCOL_HANDLER_H
#define VX_API_BASE_VX_PROTOCOL_HANDLER_H

#include <BQ/BQBase.h>

#include "api/base/VXSerializerBase.h"

namespace vx {

/* Every result is owned by the caller, and null if it cannot be made. */
class VXProtocolHandler : public VXSerializerBase {
 public:
  virtual const BQData* createRequest(const BQString* methodName, const BQDictionary* parameters,
                                      const BQArray* parameterOrder, const BQDictionary* options) = 0;
  /* The dictionary of a request; or null and a message, owned by the caller. */
  virtual const BQDictionary* parsePostData(const BQData* data, unsigned long encoding,
                                            const BQString** outError) = 0;
  /* The dictionary of a reply; a document that cannot be used gives a fault. */
  virtual const BQDictionary* parseReplyData(const BQString* methodName, const BQData* data,
                                             unsigned long encoding, const BQString** outError) = 0;
  virtual const BQData* createReply(const BQDictionary* request, const void* result) = 0;
  virtual const BQData* createFault(const BQDictionary* request, const BQDictionary* fault) = 0;
};

/* Encoding number for UTF-8, in which requests are written and undeclared documents are read. */
inline constexpr unsigned long kDefaultEncoding = 0x08000100;

}  // namespace vx

#endif
