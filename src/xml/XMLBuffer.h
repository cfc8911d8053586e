/* The text of a document under construction, written line by line. */
#ifndef VX_XML_XML_BUFFER_H
#define VX_XML_XML_BUFFER_H

#include <BQ/BQBase.h>

#include <initializer_list>
#include <string_view>

#include "values/Owned.h"

namespace vx {

/*
 * Every line is the indentation of its level, a text, and CR LF. The first line is the XML
 * declaration. What is written is not escaped, except where a function says so.
 */
class XMLBuffer {
 public:
  /* The document's encoding: a platform encoding number; one without an IANA name becomes UTF-8. */
  explicit XMLBuffer(unsigned long wanted);
  XMLBuffer(const XMLBuffer&) = delete;
  XMLBuffer& operator=(const XMLBuffer&) = delete;

  /* Appends a line with a formatted text. */
  void addTo(int level, const char* format, ...);
  void addTo(int level, const BQString* format, ...);
  void addTo(int level, const BQString* format, va_list arguments);

  using Pieces = std::initializer_list<std::string_view>;

  /* Appends a line made of pieces of UTF-8, as they stand. */
  void addLine(int level, Pieces pieces);
  /* The same with an entity-encoded text between pieces. */
  void addEncodedLine(int level, Pieces before, const BQString* text, Pieces after);
  /* The same with the base64 text of `data`, indented as encodeBinaryData has it. */
  void addBase64Line(int level, Pieces before, const BQData* data, int indent, Pieces after);

  /*
   * Called around the content of each container that is written. False, and the document is void,
   * when containers are nested too deep; then the content must not be written.
   */
  [[nodiscard]] bool enterContainer();
  void leaveContainer() { --depth_; }

  /*
   * The document in its encoding, owned by the caller. Null if the encoding lacks a character or
   * values were nested too deep.
   */
  const BQData* copyData() const;

  /* The indentation of a level, borrowed: two blanks a level, 30 from level 15 on and below 0. */
  static const BQString* getIndentString(int level);

 private:
  char* reserve(size_t size);
  void commit(const char* start, const char* end);

  Owned<BQString> text;
  unsigned long encoding;
  int depth_ = 0;
  bool tooDeep_ = false;
};

}  // namespace vx

#endif
