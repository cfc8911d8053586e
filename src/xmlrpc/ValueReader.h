/* Reads the value elements of XML-RPC. */
#ifndef VX_XMLRPC_VALUE_READER_H
#define VX_XMLRPC_VALUE_READER_H

#include <BQ/BQBase.h>

#include "values/Owned.h"
#include "xml/NameCache.h"

namespace vx {

/*
 * The value of a value element, owned by the caller. Null without a message if it has none; null
 * and in `*outError` a message, owned by the caller, if it cannot be read.
 */
BQTypeRef parseType(const BQTree* value, const BQString** outError);

/* Reads the values of one document. */
class ValueReader {
 public:
  ValueReader() = default;
  ValueReader(const ValueReader&) = delete;
  ValueReader& operator=(const ValueReader&) = delete;

  /* As parseType; the message is to be asked for. */
  Owned<const void> read(const BQTree* value);

  /* The message of what failed, owned by the caller; null if nothing has. */
  const BQString* takeError() { return error_.release(); }
  bool failed() const { return error_ != nullptr; }

 private:
  Owned<const void> readElement(const BQTree* element);
  Owned<const void> readScalar(const BQTree* element);
  Owned<const void> readArray(const BQTree* array);
  Owned<const void> readStruct(const BQTree* structure);
  void readMember(const BQTree* member, BQDictionary* dictionary);
  void checkStructChild(const BQTree* child, Owned<const BQString>& name, Owned<const void>& value);
  Owned<const BQString> readName(const BQTree* text);
  void fail(const BQString* message);

  NameCache names_; /* an array of structs shares its member names */
  Owned<const BQString> error_;
};

}  // namespace vx

#endif
