/* The result dictionary of a call while it is being made. */
#ifndef VX_TRANSPORT_WEB_SERVICE_RESULT_H
#define VX_TRANSPORT_WEB_SERVICE_RESULT_H

#include <BQ/BQBase.h>
#include <BQ/BQStream.h>
#include <VX/VXConstants.h>

#include "values/Owned.h"

namespace vx {

/* The key of the entry that marks a fault with the true object. */
extern const BQString* const kResultIsFault;

/* The detail of a transport fault, owned by the caller; empty for a null message. */
BQDictionary* copyStreamErrorDict(const BQString* message, BQStreamErrorDomain domain, long error);

class WebServiceResult {
 public:
  WebServiceResult();
  virtual ~WebServiceResult() = default;
  WebServiceResult(const WebServiceResult&) = delete;
  WebServiceResult& operator=(const WebServiceResult&) = delete;

  /* Writers set entries in it directly. */
  const Owned<BQDictionary> resultDictionary;

  /* Stores a 32-bit integer. */
  void addNumberToResult(const BQString* key, long value);

  /* A fault of the protocol. `extra` (may be null) is text in `encoding`. */
  void becomeFault(const BQString* faultString, long faultCode, const BQData* extra, unsigned long encoding);
  /* A failure of the stream. */
  void becomeFault(const BQStreamError& error);
  /* A failure of the transport, told by a message alone or with an error. */
  void becomeFault(const BQString* message);
  void becomeFault(const BQString* message, BQStreamError error);

 private:
  void markFault(const BQString* faultString, long faultCode);
  void becomeTransportFault(const BQString* message, BQStreamError error);
};

}  // namespace vx

#endif
