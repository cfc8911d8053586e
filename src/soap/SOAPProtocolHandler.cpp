#include "soap/SOAPProtocolHandler.h"

namespace vx {

SOAPProtocolHandler::SOAPProtocolHandler(const BQString* protocol) : protocol_(retain(protocol)) {}

/* The documents of SOAP are not written and read yet: there is none. */

const BQData* SOAPProtocolHandler::createRequest(const BQString*, const BQDictionary*, const BQArray*,
                                                 const BQDictionary*) {
  return nullptr;
}

const BQDictionary* SOAPProtocolHandler::parsePostData(const BQData*, unsigned long,
                                                       const BQString** outError) {
  if (outError != nullptr) *outError = nullptr;
  return nullptr;
}

const BQDictionary* SOAPProtocolHandler::parseReplyData(const BQString*, const BQData*, unsigned long,
                                                        const BQString** outError) {
  if (outError != nullptr) *outError = nullptr;
  return nullptr;
}

const BQData* SOAPProtocolHandler::createReply(const BQDictionary*, const void*) {
  return nullptr;
}

const BQData* SOAPProtocolHandler::createFault(const BQDictionary*, const BQDictionary*) {
  return nullptr;
}

}  // namespace vx
