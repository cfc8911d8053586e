/* The declaration at the start of a document: `<?xml version="1.0" encoding="UTF-8"?>`. */
#ifndef BQ_XML_XML_DECLARATION_H
#define BQ_XML_XML_DECLARATION_H

#include <cstddef>
#include <string>
#include <string_view>

namespace bq {

class XMLDeclaration {
 public:
  /*
   * Looks for a declaration at the very start of a document in ASCII or a superset of it. "xml" may be in
   * any case; in "<?XML" the keywords may be in capitals too. A declaration that is not well-formed is read
   * up to the fault.
   */
  explicit XMLDeclaration(std::string_view document);

  /* The number of bytes; 0 if there is no declaration. */
  size_t length() const { return length_; }

  /* The declared encoding, a part of the document; empty if none is. */
  std::string_view encoding() const { return encoding_; }

  /*
   * The declaration, of the same length, as it has to be shown to the parser: in lower case, and not
   * standalone. In a standalone document the parser would refuse an entity that is not declared.
   * Empty if the document has it as it has to be.
   */
  const std::string& replacement() const { return replacement_; }

 private:
  struct Attribute;
  void read(std::string_view document);
  bool readAttribute(std::string_view text, size_t& position, Attribute& attribute);
  void replace(std::string_view text, size_t position, std::string_view replacement);

  size_t length_ = 0;
  std::string_view encoding_;
  std::string replacement_;
};

}  // namespace bq

#endif
