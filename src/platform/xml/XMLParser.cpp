#include "platform/xml/XMLParser.h"

#include <BQ/BQString.h>

#include <BQ/BQXMLParser.h>

#include <algorithm>
#include <random>

#include <BQ/BQData.h>
#include <BQ/BQNumber.h>

#include "platform/xml/LeafText.h"
#include "platform/xml/StartTag.h"

namespace bq {
namespace {

/* A document up to this size is given to the parser in one piece, which it then does not copy. */
constexpr size_t kLargestPiece = size_t{1} << 30;
/* Pieces of a larger one; the parser copies what a piece cuts in two. */
constexpr size_t kPiece = size_t{64} << 20;

/* After a document larger than this the memory that it needed is given back. */
constexpr size_t kLargestKept = size_t{1} << 20;

/*
 * Entities are expanded only inside the parser, in attribute values, before the references are put back as
 * written. These bound the growth of a document by that.
 */
constexpr float kMaximumAmplification = 4;
constexpr unsigned long long kAmplificationThreshold = 1 << 20;

/* The parser recurses into an entity for each that it refers to, and so through a chain of them. */
constexpr size_t kMaximumReferringEntities = 64;

/* The parser looks at every declared attribute again for each element that could have it. */
constexpr size_t kMaximumDeclaredAttributes = 64;

/* Attributes of one tag. */
constexpr int kMostAttributes = 4096;

/*
 * Different names, and likewise references to entities: as many as this in any document, and one more for so
 * many bytes of it. The shortest take many times the memory of their bytes, in the parser and in the values.
 */
constexpr size_t kCostlyParts = 16384;
constexpr size_t kBytesPerCostlyPart = 24;

XMLParser* parserOf(void* self) {
  return static_cast<XMLParser*>(self);
}

}  // namespace

XMLParser::XMLParser() {
  std::random_device random;
  hashSalt_ = random() | static_cast<unsigned long>(random()) << 32 | 1;
}

const BQTree* XMLParser::parse(std::string_view bytes, bool keepsLeafText, const BQDictionary** error) {
  DocumentText text(bytes);
  if (text.error() != nullptr) {
    if (error != nullptr) *error = makeErrorDictionary({text.error(), 1, 0, kBQXMLTreeStatusBadEncoding});
    return nullptr;
  }
  text_ = &text;
  keepsLeafText_ = keepsLeafText;
  limit_ = kCostlyParts + bytes.size() / kBytesPerCostlyPart;
  bool parsed = readPlain() || readWithExpat();
  if (!parsed) {
    if (error != nullptr) *error = makeError();
    arena_->release();
  }
  trim(bytes.size());
  return parsed ? builder_.document() : nullptr;
}

void XMLParser::begin() {
  arena_ = Arena::create();
  names_.begin(limit_);
  lists_.begin();
  builder_.begin(*arena_, keepsLeafText_);
}

bool XMLParser::readPlain() {
  if (!text_->head().empty()) return false;
  begin();
  bool isPlain = plain_.read(*arena_, text_->tail());
  if (!isPlain) arena_->release();
  return isPlain;
}

/* The plain reader checks every byte itself; expat is given checked text only. */
bool XMLParser::readWithExpat() {
  begin();
  if (auto bad = text_->findBadByte()) {
    failure_ = {BQSTR("not well-formed (NUL or malformed UTF-8)"), bad->line,
                static_cast<int64_t>(bad->offset), kBQXMLTreeStatusBadEncoding};
    return false;
  }
  prepareExpat();
  return feedAll();
}

/*
 * An entity that is not declared is an error to the parser, unless a document type that it could not
 * read might declare it: it is made to believe in one. A null default handler keeps it from expanding
 * the entities that are declared.
 */
void XMLParser::prepareExpat() {
  failure_.reset();
  declaredAttributes_ = 0;
  referringEntities_ = 0;
  entityReferences_ = 0;
  if (expat_ == nullptr) {
    expat_.reset(XML_ParserCreate("UTF-8"));
    if (expat_ == nullptr) failAllocation(0);
  } else {
    XML_ParserReset(expat_.get(), "UTF-8");
  }
  XML_Parser expat = expat_.get();
  XML_SetHashSalt(expat, hashSalt_);
  XML_UseForeignDTD(expat, XML_TRUE);
  XML_SetDefaultHandler(expat, nullptr);
  XML_SetBillionLaughsAttackProtectionMaximumAmplification(expat, kMaximumAmplification);
  XML_SetBillionLaughsAttackProtectionActivationThreshold(expat, kAmplificationThreshold);
  XML_SetUserData(expat, this);
  XML_SetElementHandler(expat, startElement, endElement);
  XML_SetCharacterDataHandler(expat, characterData);
  XML_SetCdataSectionHandler(expat, startCDATASection, endCDATASection);
  XML_SetSkippedEntityHandler(expat, skippedEntity);
  XML_SetEntityDeclHandler(expat, entityDeclaration);
  XML_SetAttlistDeclHandler(expat, attributeDeclaration);
  XML_SetExternalEntityRefHandler(expat, externalEntity);
}

bool XMLParser::feedAll() {
  return (text_->head().empty() || feed(text_->head(), false)) && feed(text_->tail(), true);
}

bool XMLParser::feed(std::string_view bytes, bool last) {
  size_t piece = bytes.size() > kLargestPiece ? kPiece : bytes.size();
  for (; bytes.size() > piece; bytes.remove_prefix(piece)) {
    if (XML_Parse(expat_.get(), bytes.data(), static_cast<int>(piece), XML_FALSE) != XML_STATUS_OK)
      return false;
  }
  return XML_Parse(expat_.get(), bytes.data(), static_cast<int>(bytes.size()), last) == XML_STATUS_OK;
}

const BQDictionary* XMLParser::makeErrorDictionary(const Failure& failure) {
  using Number = Ref<const BQNumber>;
  Number line = Number::adopt(BQNumberCreate(kBQNumberSInt64Type, &failure.line));
  Number location = Number::adopt(BQNumberCreate(kBQNumberSInt64Type, &failure.location));
  Number status = Number::adopt(BQNumberCreate(kBQNumberIntType, &failure.status));
  const void* keys[] = {kBQXMLTreeErrorDescription, kBQXMLTreeErrorLineNumber, kBQXMLTreeErrorLocation,
                        kBQXMLTreeErrorStatusCode};
  const void* values[] = {failure.description, line.get(), location.get(), status.get()};
  return BQDictionaryCreate(keys, values, 4);
}

const BQDictionary* XMLParser::makeError() const {
  if (failure_) return makeErrorDictionary(*failure_);
  XML_Error code = XML_GetErrorCode(expat_.get());
  Ref<const BQString> description =
      Ref<const BQString>::adopt(BQStringCreateWithCString(XML_ErrorString(code), kBQStringEncodingASCII));
  return makeErrorDictionary(failureHere(description.get(), code));
}

XMLParser::Failure XMLParser::failureHere(const BQString* description, int status) const {
  auto position = static_cast<size_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(expat_.get()), 0));
  auto line = static_cast<int64_t>(XML_GetCurrentLineNumber(expat_.get()));
  return {description, line, static_cast<int64_t>(text_->offset(position)), status};
}

void XMLParser::stop(const BQString* description, int status) {
  failure_ = failureHere(description, status);
  XML_StopParser(expat_.get(), XML_FALSE);
}

/* False, for something that takes too much memory. */
bool XMLParser::refuse(const BQString* description) {
  stop(description, XML_ERROR_AMPLIFICATION_LIMIT_BREACH);
  return false;
}

void XMLParser::startElement(void* self, const XML_Char* name, const XML_Char** attributes) {
  XMLParser* parser = parserOf(self);
  const AttributeList* list = nullptr;
  if (!parser->readAttributes(attributes, &list)) return;
  const BQString* shared = parser->sharedName(name);
  if (shared == nullptr || parser->builder_.startElement(shared, list)) return;
  parser->stop(BQSTR("elements nested deeper than 512 levels"), kBQXMLTreeStatusTooDeep);
}

void XMLParser::endElement(void* self, const XML_Char*) {
  parserOf(self)->builder_.endElement();
}

void XMLParser::characterData(void* self, const XML_Char* text, int length) {
  parserOf(self)->builder_.appendText({text, static_cast<size_t>(length)});
}

void XMLParser::startCDATASection(void* self) {
  parserOf(self)->builder_.startCDATASection();
}

void XMLParser::endCDATASection(void* self) {
  parserOf(self)->builder_.endCDATASection();
}

void XMLParser::skippedEntity(void* self, const XML_Char* name, int isParameterEntity) {
  if (isParameterEntity == 0) parserOf(self)->addEntityReference(name);
}

/* Character references in the value are already decoded: an ampersand in it begins a reference. */
void XMLParser::entityDeclaration(void* self, const XML_Char*, int, const XML_Char* value, int length,
                                  const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*) {
  XMLParser* parser = parserOf(self);
  if (value == nullptr) return; /* of an entity in a file, which is never opened */
  bool refers = std::string_view(value, static_cast<size_t>(length)).find('&') != std::string_view::npos;
  if (!refers || ++parser->referringEntities_ <= kMaximumReferringEntities) return;
  parser->refuse(BQSTR("too many entities that refer to others"));
}

void XMLParser::attributeDeclaration(void* self, const XML_Char*, const XML_Char*, const XML_Char*,
                                     const XML_Char*, int) {
  XMLParser* parser = parserOf(self);
  if (++parser->declaredAttributes_ <= kMaximumDeclaredAttributes) return;
  parser->refuse(BQSTR("too many attributes declared by the document type"));
}

/*
 * A reference to an entity that is declared as a file. As no entity is ever opened, the context is the
 * name of this one. The answer says that it was dealt with.
 */
int XMLParser::externalEntity(XML_Parser parser, const XML_Char* context, const XML_Char*, const XML_Char*,
                              const XML_Char*) {
  if (context != nullptr) parserOf(XML_GetUserData(parser))->addEntityReference(context);
  return XML_STATUS_OK;
}

void XMLParser::addEntityReference(const XML_Char* name) {
  const BQString* shared = sharedName(name);
  if (shared == nullptr) return;
  if (++entityReferences_ > limit_) {
    refuse(BQSTR("too many references to entities"));
  } else {
    builder_.entityReference(shared);
  }
}

/* Null, and the failure, if there are too many. */
const BQString* XMLParser::sharedName(std::string_view name) {
  const BQString* shared = names_.find(*arena_, name);
  if (shared == nullptr) refuse(BQSTR("too many different names"));
  return shared;
}

/*
 * Only attributes in the tag itself count. Values that the document type supplies would come again with
 * every element and let a small document make a large tree. The list is null if there are none;
 * false, and the failure, if there are too many.
 */
bool XMLParser::readAttributes(const XML_Char** attributes, const AttributeList** list) {
  XML_Parser expat = expat_.get();
  attributes_.clear();
  *list = nullptr;
  int count = attributes[0] != nullptr ? XML_GetSpecifiedAttributeCount(expat) : 0;
  if (count == 0) return true;
  if (count / 2 > kMostAttributes) return refuse(BQSTR("too many attributes in one tag"));
  for (int i = 0; i < count; i += 2) attributes_.push_back({attributes[i], attributes[i + 1]});
  std::string_view tag = text_->from(static_cast<size_t>(XML_GetCurrentByteIndex(expat)))
                             .substr(0, static_cast<size_t>(XML_GetCurrentByteCount(expat)));
  if (tag.find('&') != std::string_view::npos) restoreEntityReferences(tag);
  *list = lists_.find(*arena_, names_, attributes_);
  return *list != nullptr || refuse(BQSTR("too many different names"));
}

/* In attribute values the parser expands entities or drops them silently. */
void XMLParser::restoreEntityReferences(std::string_view tag) {
  attributeTexts_.clear();
  attributeTexts_.reserve(attributes_.size());
  StartTag reader(tag);
  for (Attribute& attribute : attributes_) {
    std::optional<std::string> text = textWithEntityReferences(reader.nextValue());
    if (text) attribute.value = attributeTexts_.emplace_back(std::move(*text));
  }
}

void XMLParser::trim(size_t documentSize) {
  text_ = nullptr;
  arena_ = nullptr;
  if (documentSize <= kLargestKept) return;
  expat_.reset();
  names_.begin(0);
  builder_.shrink();
  attributes_ = {};
  attributeTexts_ = {};
}

const BQTree* createTree(const BQData* data, bool keepsLeafText, const BQDictionary** error) {
  thread_local XMLParser parser;
  if (error != nullptr) *error = nullptr;
  bool isData = isInstance(data, kDataTypeID);
  const char* bytes = isData ? reinterpret_cast<const char*>(BQDataGetBytePtr(data)) : "";
  return parser.parse({bytes, isData ? static_cast<size_t>(BQDataGetLength(data)) : 0}, keepsLeafText, error);
}

}  // namespace bq

BQ_DEFINE_STRING(kBQXMLTreeErrorDescription, "kBQXMLTreeErrorDescription");
BQ_DEFINE_STRING(kBQXMLTreeErrorLineNumber, "kBQXMLTreeErrorLineNumber");
BQ_DEFINE_STRING(kBQXMLTreeErrorLocation, "kBQXMLTreeErrorLocation");
BQ_DEFINE_STRING(kBQXMLTreeErrorStatusCode, "kBQXMLTreeErrorStatusCode");

const BQTree* BQXMLTreeCreateFromDataWithError(const BQData* data, const BQDictionary** error) {
  return bq::createTree(data, false, error);
}
