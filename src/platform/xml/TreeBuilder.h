/* Makes the tree of a document from its tags and texts as they come. */
#ifndef BQ_XML_TREE_BUILDER_H
#define BQ_XML_TREE_BUILDER_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/object/Arena.h"
#include "platform/xml/Tree.h"

namespace bq {

/* Elements nested deeper than this are refused; readers of the tree recurse. */
inline constexpr size_t kMaximumElementDepth = 512;

class TreeBuilder {
 public:
  /*
   * Begins a document, whose memory the arena gives. Text of white space alone makes a node beside a
   * reference to an entity; with `keepsLeafText` also beside a CDATA section and as all that an element
   * holds.
   */
  void begin(Arena& arena, bool keepsLeafText);

  bool keepsLeafText() const { return keepsLeafText_; }

  /* False, without effect, if the element is nested too deep. */
  bool startElement(const BQString* name, const AttributeList* attributes);
  void endElement();
  void appendText(std::string_view text);
  /* The same for text whose memory stays as it is until the next tag. */
  void appendLastingText(std::string_view text);
  void startCDATASection();
  void endCDATASection();
  void entityReference(const BQString* name);

  /* The document's position. */
  const BQTree* document() const { return levels_[0].position; }

  /* Frees what a large text left behind. */
  void shrink();

 private:
  struct Level {
    Parent* position;
    BQTree* lastChild;
  };

  template <class Position>
  Position* make(BQXMLNodeTypeCode type, uint16_t flags, const BQString* string);
  void append(BQTree* position);
  void appendTextNode(BQXMLNodeTypeCode type);
  std::string_view text() const { return text_.empty() ? lastingText_ : text_; }
  void clearText();
  void finishText(bool keepsBlanks);

  Arena* arena_ = nullptr;
  BQTypeID treeTypeID_ = 0;
  BQTypeID nodeTypeID_ = 0;

  /* Text that no tag, CDATA section or entity reference has ended yet. */
  std::string text_;
  /* All of it, if it is in one piece that lasts; then there is none above. */
  std::string_view lastingText_;
  bool textIsBlank_ = true;
  /* True if what comes before it makes a node of it even if it is blank. */
  bool keepsBlanksAfter_ = false;
  bool keepsLeafText_ = false;

  size_t depth_ = 0;
  std::array<Level, kMaximumElementDepth + 1> levels_{};
};

}  // namespace bq

#endif
