/* Writes values as an XML property list. */
#ifndef BQ_PLIST_PROPERTY_LIST_WRITER_H
#define BQ_PLIST_PROPERTY_LIST_WRITER_H

#include <BQ/BQObject.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace bq {

class PropertyListWriter {
 public:
  /* Writes the document. False if there can be none; the text is then of no use. */
  bool writeDocument(BQTypeRef value);

  const std::string& text() const { return text_; }

 private:
  /* `depth` counts the elements around the value. */
  bool writeValue(BQTypeRef value, size_t depth);
  bool writeArray(const BQArray* array, size_t depth);
  bool writeDictionary(const BQDictionary* dictionary, size_t depth);
  bool writeString(std::string_view element, BQTypeRef object);
  bool writeNumber(const BQNumber* number);
  bool writeDate(const BQDate* date);
  bool writeData(const BQData* data);
  bool appendEscaped(std::string_view text);
  void element(std::string_view name, std::string_view content);
  void open(std::string_view name);
  void close(std::string_view name);
  void indent(size_t depth);

  std::string text_;
};

}  // namespace bq

#endif
