/* The text of a document whatever encoding its bytes are in. */
#ifndef BQ_XML_DOCUMENT_TEXT_H
#define BQ_XML_DOCUMENT_TEXT_H

#include <BQ/BQString.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/object/Object.h"
#include "platform/xml/XMLDeclaration.h"

namespace bq {

class DocumentText {
 public:
  /*
   * Finds the encoding: that of a byte-order mark, or of the first bytes if they show UTF-16, UTF-32 or
   * EBCDIC, else the declared one, else UTF-8. Bytes in UTF-8 are used in place, so they must outlive the
   * text. Others are converted.
   */
  explicit DocumentText(std::string_view bytes);

  /* Why there is no text, borrowed; null if there is. */
  const BQString* error() const { return error_.get(); }

  /*
   * The offset in the data and the line of the first byte that is NUL or not well-formed UTF-8; nothing if
   * there is none. Only then may expat see the text: it takes NUL for half of a UTF-16 character and
   * changes the encoding.
   */
  struct BadByte {
    size_t offset;
    int64_t line;
  };
  std::optional<BadByte> findBadByte() const;

  /*
   * The text in UTF-8 is the head and the tail. There is a head, with the declaration, only if it has
   * to be changed or a byte-order mark follows it.
   */
  std::string_view head() const { return head_; }
  std::string_view tail() const { return text_.substr(tailStart_); }

  /* The bytes at a position that counts through head and tail. The head's are as the document has them. */
  std::string_view from(size_t position) const;

  /* Where in the data such a position is; in their UTF-8 form if they were converted. */
  size_t offset(size_t position) const { return textStart_ + text_.size() - from(position).size(); }

 private:
  void decode(std::string_view bytes);
  void convert(std::string_view bytes, std::string_view name);
  void fail(const BQString* format, std::string_view name);
  void split();

  Ref<const BQString> error_;
  Ref<const BQString> converted_;
  std::string_view text_;
  size_t textStart_ = 0;
  std::string head_;
  size_t tailStart_ = 0;
};

}  // namespace bq

#endif
