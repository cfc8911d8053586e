/* Turns the bytes of a document into a tree. The only one that knows the underlying parser. */
#ifndef BQ_XML_XML_PARSER_H
#define BQ_XML_XML_PARSER_H

#include <BQ/BQDictionary.h>
#include <BQ/BQTree.h>

/* The header declares the limits on entities only for a parser with support of document types. */
#define XML_DTD
#include <expat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/object/Arena.h"
#include "platform/object/Object.h"
#include "platform/xml/AttributeTable.h"
#include "platform/xml/DocumentText.h"
#include "platform/xml/NameTable.h"
#include "platform/xml/PlainReader.h"
#include "platform/xml/TreeBuilder.h"

namespace bq {

/* Parses one document after the other and keeps its memory between them. */
class XMLParser {
 public:
  XMLParser();

  /* The tree, owned by the caller. Null if there is none; then `*error`, if asked for, says why. */
  const BQTree* parse(std::string_view bytes, bool keepsLeafText, const BQDictionary** error);

 private:
  struct Failure {
    const BQString* description;
    int64_t line;
    int64_t location;
    int status;
  };
  struct FreeParser {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  static void startElement(void* self, const XML_Char* name, const XML_Char** attributes);
  static void endElement(void* self, const XML_Char* name);
  static void characterData(void* self, const XML_Char* text, int length);
  static void startCDATASection(void* self);
  static void endCDATASection(void* self);
  static void skippedEntity(void* self, const XML_Char* name, int isParameterEntity);
  static void entityDeclaration(void* self, const XML_Char* name, int isParameterEntity,
                                const XML_Char* value, int length, const XML_Char* base,
                                const XML_Char* systemID, const XML_Char* publicID, const XML_Char* notation);
  static void attributeDeclaration(void* self, const XML_Char* element, const XML_Char* attribute,
                                   const XML_Char* type, const XML_Char* value, int isRequired);
  static int externalEntity(XML_Parser parser, const XML_Char* context, const XML_Char* base,
                            const XML_Char* systemID, const XML_Char* publicID);

  static const BQDictionary* makeErrorDictionary(const Failure& failure);
  void begin();
  bool readPlain();
  bool readWithExpat();
  void prepareExpat();
  bool feedAll();
  bool feed(std::string_view bytes, bool last);
  void stop(const BQString* description, int status);
  bool refuse(const BQString* description);
  Failure failureHere(const BQString* description, int status) const;
  const BQDictionary* makeError() const;
  void addEntityReference(const XML_Char* name);
  const BQString* sharedName(std::string_view name);
  bool readAttributes(const XML_Char** attributes, const AttributeList** list);
  void restoreEntityReferences(std::string_view tag);
  void trim(size_t documentSize);

  std::unique_ptr<XML_ParserStruct, FreeParser> expat_;
  unsigned long hashSalt_;
  const DocumentText* text_ = nullptr;
  bool keepsLeafText_ = false;
  Arena* arena_ = nullptr;
  NameTable names_;
  AttributeTable lists_;
  TreeBuilder builder_;
  PlainReader plain_{names_, lists_, builder_};
  /* Of different names, and of references to entities. */
  size_t limit_ = 0;
  size_t declaredAttributes_ = 0;
  size_t referringEntities_ = 0;
  size_t entityReferences_ = 0;
  /* Why the parser was stopped, and where: it goes on a little after that. */
  std::optional<Failure> failure_;
  std::vector<Attribute> attributes_;
  std::vector<std::string> attributeTexts_;
};

}  // namespace bq

#endif
