/* Reads the values of an XML property list from its tree. */
#ifndef BQ_PLIST_PROPERTY_LIST_READER_H
#define BQ_PLIST_PROPERTY_LIST_READER_H

#include <BQ/BQString.h>
#include <BQ/BQTree.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/object/Object.h"

namespace bq {

class PropertyListReader {
 public:
  using Value = Ref<const void>;

  /* The value of a document; none if it is no property list. */
  Value readDocument(const BQTree* document);

  /* What is wrong with the document; null if nothing is. Borrowed. */
  const BQString* error() const { return error_.get(); }

 private:
  struct Kind;
  static const Kind kKinds[];

  Value readValue(const BQTree* element);
  Value readDictionary(const BQTree* element);
  Value readArray(const BQTree* element);
  Value readString(const BQTree* element);
  Value readInteger(const BQTree* element);
  Value readReal(const BQTree* element);
  Value readTrue(const BQTree* element);
  Value readFalse(const BQTree* element);
  Value readDate(const BQTree* element);
  Value readData(const BQTree* element);

  std::optional<std::string_view> textOf(const BQTree* element);
  Value fail(const BQString* format, const BQTree* element);

  Ref<const BQString> error_;
  std::string text_;
};

}  // namespace bq

#endif
