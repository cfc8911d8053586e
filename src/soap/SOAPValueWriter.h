/* Writes the elements of values in SOAP's encoding. */
#ifndef VX_SOAP_SOAP_VALUE_WRITER_H
#define VX_SOAP_SOAP_VALUE_WRITER_H

#include <BQ/BQBase.h>

#include <string_view>

#include "api/base/VXSerializerBase.h"
#include "soap/Generation.h"
#include "xml/XMLBuffer.h"

namespace vx {

class SOAPValueWriter {
 public:
  /* The serializer supplies the overrides. Nothing is owned. */
  SOAPValueWriter(XMLBuffer* buffer, VXSerializerBase* serializer, const Generation* generation)
      : buffer_(*buffer),
        serializer_(*serializer),
        generation_(*generation),
        hasOverrides_(serializer->hasSerializationOverrides()) {}

  /* Appends the element of a value (may be null) under a name. */
  void write(int level, std::string_view name, BQTypeRef value);
  /* The same under a name that may be no string: it goes by its description. */
  void writeNamed(int level, BQTypeRef name, BQTypeRef value);

 private:
  bool writeOverride(int level, std::string_view name, BQTypeRef value);
  void writeContent(int level, std::string_view name, BQTypeRef value);
  void writeTyped(int level, std::string_view name, std::string_view type, std::string_view text);
  void writeInteger(int level, std::string_view name, const BQNumber* number);
  void writeDouble(int level, std::string_view name, const BQNumber* number);
  void writeDate(int level, std::string_view name, const BQDate* date);
  void writeData(int level, std::string_view name, const BQData* data);
  void writeArray(int level, std::string_view name, const BQArray* array);
  void writeDictionary(int level, std::string_view name, const BQDictionary* dictionary);
  void writeMembers(int level, const BQDictionary* dictionary);
  void writeMember(int level, BQTypeRef key, BQTypeRef value);
  void writeUnknown(int level, std::string_view name, BQTypeRef value);

  XMLBuffer& buffer_;
  VXSerializerBase& serializer_;
  const Generation& generation_;
  const bool hasOverrides_;
};

}  // namespace vx

#endif
