/* The properties of a stream and what they mean for its transfer. */
#ifndef BQ_HTTP_STREAM_PROPERTIES_H
#define BQ_HTTP_STREAM_PROPERTIES_H

#include <array>

#include "platform/http/StreamError.h"
#include "platform/http/Transfer.h"
#include "platform/object/Object.h"

namespace bq {

class StreamProperties {
 public:
  /* Null removes a property. False if it is unknown or the value is of another class. */
  bool set(const BQString* key, BQTypeRef value);

  /* Borrowed; null if it is unset. */
  BQTypeRef get(const BQString* key) const;

  /* The error that says which of them is unusable, if one is. */
  BQStreamError readInto(TransferOptions& options) const;

 private:
  enum Index {
    kProxy,
    kAutoredirect,
    kMaximumReplySize,
    kConnectionLimit,
    kVerifyPeer,
    kAuthorityFile,
    kCount
  };
  struct Kind {
    const BQString* key;
    BQTypeID valueType;
  };

  static const std::array<Kind, kCount> kKinds;
  static const Kind* kindOf(const BQString* key);

  std::array<Ref<const void>, kCount> values_;
};

}  // namespace bq

#endif
