/* The protocols whose reply documents are written and read. */
#ifndef BENCH_CODEC_H
#define BENCH_CODEC_H

#include <VX/VX.h>

#include <string_view>

#include "Payload.h"

namespace bench {

class Codec {
 public:
  static const Codec& xmlRPC();
  /* The generation of 2001. */
  static const Codec& soap();

  /* The handler that all documents of the protocol go through. */
  VXProtocolHandlerRef handler() const { return handler_; }

  /* The reply that carries a value. */
  BQRef<const BQData> encodeReply(BQTypeRef value) const;

  /* The result dictionary of a reply. */
  BQRef<const BQDictionary> decodeReply(const BQData* document) const;

  /*
   * The reply of a payload, after it was seen to decode to the value that it was made of, so that no
   * benchmark measures a failure. Ends the program if it does not.
   */
  BQRef<const BQData> checkedReply(const Payload& payload) const;

 private:
  explicit Codec(const BQString* protocol);

  VXProtocolHandlerRef handler_;
  /* What is answered, for SOAP, whose replies repeat the name of the method. */
  BQRef<const BQDictionary> request_;
};

std::string_view bytesOf(const BQData* data);

}  // namespace bench

#endif
