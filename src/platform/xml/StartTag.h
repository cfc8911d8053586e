/* Attribute values as the document has them, for those that refer to entities. */
#ifndef BQ_XML_START_TAG_H
#define BQ_XML_START_TAG_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace bq {

/* Walks the attributes of a start tag. Any bytes are accepted; those of no tag have values without meaning.
 */
class StartTag {
 public:
  /* `tag` begins with "<". */
  explicit StartTag(std::string_view tag);

  /* The value of the next attribute, between its quotes; empty if there is none. */
  std::string_view nextValue();

 private:
  std::string_view rest_;
};

/* The character of a predefined entity; NUL for any other name. */
char predefinedEntity(std::string_view name);

/*
 * The text of a value in which references to entities stay as written: "&name;". Characters that are
 * written as predefined entities or by number, and white space, come out as the parser gives them.
 * Nothing if the value has no reference to an entity.
 */
std::optional<std::string> textWithEntityReferences(std::string_view value);

}  // namespace bq

#endif
