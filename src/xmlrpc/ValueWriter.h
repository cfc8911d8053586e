/* Writes the value elements of XML-RPC. */
#ifndef VX_XMLRPC_VALUE_WRITER_H
#define VX_XMLRPC_VALUE_WRITER_H

#include <BQ/BQBase.h>

#include "api/base/VXSerializerBase.h"
#include "xml/XMLBuffer.h"

namespace vx {

class ValueWriter {
 public:
  /* The serializer supplies the overrides. Neither is owned. */
  ValueWriter(XMLBuffer* buffer, VXSerializerBase* serializer)
      : buffer_(*buffer), serializer_(*serializer), hasOverrides_(serializer->hasSerializationOverrides()) {}

  /* Appends the value element of a value (may be null), its first and last line at `level`. */
  void write(int level, BQTypeRef value);

 private:
  bool writeOverride(int level, BQTypeRef value);
  void writeContent(int level, BQTypeRef value);
  void writeInteger(int level, const BQNumber* number);
  void writeDouble(int level, const BQNumber* number);
  void writeDate(int level, const BQDate* date);
  void writeData(int level, const BQData* data);
  void writeArray(int level, const BQArray* array);
  void writeStruct(int level, const BQDictionary* dictionary);
  void writeMember(int level, BQTypeRef name, BQTypeRef value);
  void writeUnknown(int level, BQTypeRef value);

  XMLBuffer& buffer_;
  VXSerializerBase& serializer_;
  const bool hasOverrides_;
};

}  // namespace vx

#endif
