/* Reads the documents that most are: elements, attributes and text, without anything unusual. */
#ifndef BQ_XML_PLAIN_READER_H
#define BQ_XML_PLAIN_READER_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/object/Arena.h"
#include "platform/xml/AttributeTable.h"
#include "platform/xml/NameTable.h"
#include "platform/xml/TreeBuilder.h"

namespace bq {

/*
 * Takes a document only if every character of it is one that it knows to be right: names in ASCII, tags
 * that match, well-formed UTF-8, predefined entities and character references. Whatever else there is
 * in XML, and every fault, is for the real parser, which then reads the document from the start; so a
 * document makes the same tree or the same error whichever reads it.
 */
class PlainReader {
 public:
  PlainReader(NameTable& names, AttributeTable& lists, TreeBuilder& builder)
      : names_(names), lists_(lists), builder_(builder) {}

  /* Makes the tree of a document in UTF-8. False if it is not plain: what was made is then of no use. */
  bool read(Arena& arena, std::string_view document);

 private:
  bool skipDeclaration();
  bool readTag();
  bool readStartTag();
  bool readEndTag();
  bool readAttributes();
  bool readAttribute();
  bool readText();
  bool readReference();
  bool readCharacterReference(std::string_view digits);
  void readLineEnd();

  char peek() const { return next_ != end_ ? *next_ : '\0'; }
  std::string_view rest() const { return {next_, static_cast<size_t>(end_ - next_)}; }
  bool skip(char expected) {
    bool isThere = peek() == expected;
    next_ += isThere;
    return isThere;
  }
  bool skip(std::string_view expected);
  void skipAll(uint8_t place);
  bool skipBlanks();
  bool skipCharacter();
  std::string_view readName();
  std::string_view readQuoted();
  void appendFrom(const char* start);

  NameTable& names_;
  AttributeTable& lists_;
  TreeBuilder& builder_;
  Arena* arena_ = nullptr;
  const char* next_ = nullptr;
  const char* end_ = nullptr;
  /* The names of the elements that are open. */
  std::vector<std::string_view> open_;
  std::vector<Attribute> attributes_;
};

}  // namespace bq

#endif
