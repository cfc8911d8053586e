#include "platform/plist/PropertyListReader.h"

#include <charconv>
#include <system_error>
#include <vector>

#include <BQ/BQArray.h>
#include <BQ/BQBoolean.h>
#include <BQ/BQData.h>
#include <BQ/BQDate.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQNumber.h>
#include <BQ/BQPropertyList.h>
#include <BQ/BQXMLNode.h>
#include <BQ/BQXMLParser.h>

#include "platform/plist/Base64.h"
#include "platform/plist/DateText.h"
#include "platform/xml/LeafText.h"

namespace bq {
namespace {

BQXMLNodeTypeCode typeOf(const BQTree* tree) {
  return BQXMLNodeGetTypeCode(BQXMLTreeGetNode(tree));
}

std::string_view stringOf(const BQTree* tree) {
  BQIndex length = 0;
  const char* bytes = BQXMLNodeGetUTF8(BQXMLTreeGetNode(tree), &length);
  return {bytes, static_cast<size_t>(length)};
}

bool isElement(const BQTree* tree, std::string_view name) {
  return typeOf(tree) == kBQXMLNodeTypeElement && stringOf(tree) == name;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kWhitespace = " \t\r\n";
  size_t start = text.find_first_not_of(kWhitespace);
  if (start == std::string_view::npos) return {};
  return text.substr(start, text.find_last_not_of(kWhitespace) - start + 1);
}

/* The first child of an element in which white space has no meaning. */
const BQTree* firstChild(const BQTree* element) {
  const BQTree* child = BQTreeGetFirstChild(element);
  bool isBlank = typeOf(child) == kBQXMLNodeTypeText && trimmed(stringOf(child)).empty();
  return isBlank ? BQTreeGetNextSibling(child) : child;
}

/* A number that is the whole text, white space around it and a plus sign aside. */
template <class Number>
bool parseNumber(std::string_view text, Number& number) {
  text = trimmed(text);
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

}  // namespace

struct PropertyListReader::Kind {
  std::string_view name;
  Value (PropertyListReader::*read)(const BQTree* element);
};

const PropertyListReader::Kind PropertyListReader::kKinds[] = {
    {"string", &PropertyListReader::readString}, {"dict", &PropertyListReader::readDictionary},
    {"array", &PropertyListReader::readArray},   {"integer", &PropertyListReader::readInteger},
    {"real", &PropertyListReader::readReal},     {"true", &PropertyListReader::readTrue},
    {"false", &PropertyListReader::readFalse},   {"date", &PropertyListReader::readDate},
    {"data", &PropertyListReader::readData},
};

PropertyListReader::Value PropertyListReader::readDocument(const BQTree* document) {
  const BQTree* root = BQTreeGetFirstChild(document);
  if (!isElement(root, "plist")) return fail(BQSTR("the document is no property list but <%@>"), root);
  const BQTree* value = firstChild(root);
  if (value == nullptr || BQTreeGetNextSibling(value) != nullptr)
    return fail(BQSTR("<%@> must hold one value"), root);
  return readValue(value);
}

/* Recurses no deeper than the parser lets elements be nested. */
PropertyListReader::Value PropertyListReader::readValue(const BQTree* element) {
  if (typeOf(element) != kBQXMLNodeTypeElement) return fail(BQSTR("text where a value must stand"), element);
  std::string_view name = stringOf(element);
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return (this->*kind.read)(element);
  }
  return fail(BQSTR("<%@> is no kind of value"), element);
}

PropertyListReader::Value PropertyListReader::readDictionary(const BQTree* element) {
  std::vector<Value> objects;
  std::vector<BQTypeRef> keys, values;
  for (const BQTree* child = firstChild(element); child != nullptr; child = BQTreeGetNextSibling(child)) {
    if (!isElement(child, "key"))
      return fail(BQSTR("<%@> with something else where a key must stand"), element);
    Value key = readString(child);
    child = BQTreeGetNextSibling(child);
    if (!key) return nullptr;
    if (child == nullptr) return fail(BQSTR("<%@> with a key without a value"), element);
    Value value = readValue(child);
    if (!value) return nullptr;
    keys.push_back(key.get());
    values.push_back(value.get());
    objects.push_back(std::move(key));
    objects.push_back(std::move(value));
  }
  return Value::adopt(BQDictionaryCreate(keys.data(), values.data(), static_cast<BQIndex>(keys.size())));
}

PropertyListReader::Value PropertyListReader::readArray(const BQTree* element) {
  std::vector<Value> objects;
  std::vector<BQTypeRef> values;
  for (const BQTree* child = firstChild(element); child != nullptr; child = BQTreeGetNextSibling(child)) {
    Value value = readValue(child);
    if (!value) return nullptr;
    values.push_back(value.get());
    objects.push_back(std::move(value));
  }
  return Value::adopt(BQArrayCreate(values.data(), static_cast<BQIndex>(values.size())));
}

PropertyListReader::Value PropertyListReader::readString(const BQTree* element) {
  std::optional<std::string_view> text = textOf(element);
  if (!text) return nullptr;
  return Value::adopt(BQStringCreateWithUTF8(text->data(), static_cast<BQIndex>(text->size())));
}

PropertyListReader::Value PropertyListReader::readInteger(const BQTree* element) {
  std::optional<std::string_view> text = textOf(element);
  if (!text) return nullptr;
  int64_t number = 0;
  if (!parseNumber(*text, number)) return fail(BQSTR("<%@> holds no number of 64 bits"), element);
  return Value::adopt(BQNumberCreate(kBQNumberSInt64Type, &number));
}

PropertyListReader::Value PropertyListReader::readReal(const BQTree* element) {
  std::optional<std::string_view> text = textOf(element);
  if (!text) return nullptr;
  double number = 0;
  if (!parseNumber(*text, number)) return fail(BQSTR("<%@> holds no number"), element);
  return Value::adopt(BQNumberCreate(kBQNumberFloat64Type, &number));
}

PropertyListReader::Value PropertyListReader::readTrue(const BQTree* element) {
  if (firstChild(element) != nullptr) return fail(BQSTR("<%@> must be empty"), element);
  return Value::retain(kBQBooleanTrue);
}

PropertyListReader::Value PropertyListReader::readFalse(const BQTree* element) {
  if (firstChild(element) != nullptr) return fail(BQSTR("<%@> must be empty"), element);
  return Value::retain(kBQBooleanFalse);
}

PropertyListReader::Value PropertyListReader::readDate(const BQTree* element) {
  std::optional<std::string_view> text = textOf(element);
  if (!text) return nullptr;
  std::optional<BQAbsoluteTime> time = parseDate(trimmed(*text));
  if (!time) return fail(BQSTR("<%@> holds no date"), element);
  return Value::adopt(BQDateCreate(*time));
}

PropertyListReader::Value PropertyListReader::readData(const BQTree* element) {
  std::optional<std::string_view> text = textOf(element);
  if (!text) return nullptr;
  std::string bytes;
  if (!appendBase64Decoded(bytes, *text)) return fail(BQSTR("<%@> holds no base64"), element);
  return Value::adopt(BQDataCreate(bytes.data(), static_cast<BQIndex>(bytes.size())));
}

/* The characters of an element, valid until the next call; nothing if it holds anything else. */
std::optional<std::string_view> PropertyListReader::textOf(const BQTree* element) {
  const BQTree* child = BQTreeGetFirstChild(element);
  if (child == nullptr) return "";
  bool several = BQTreeGetNextSibling(child) != nullptr;
  text_.clear();
  for (; child != nullptr; child = BQTreeGetNextSibling(child)) {
    if (typeOf(child) != kBQXMLNodeTypeText && typeOf(child) != kBQXMLNodeTypeCDATASection) {
      fail(BQSTR("<%@> must hold nothing but text"), element);
      return std::nullopt;
    }
    if (!several) return stringOf(child);
    text_ += stringOf(child);
  }
  return text_;
}

PropertyListReader::Value PropertyListReader::fail(const BQString* format, const BQTree* element) {
  error_ = Ref<const BQString>::adopt(
      BQStringCreateWithFormat(format, BQXMLNodeGetString(BQXMLTreeGetNode(element))));
  return nullptr;
}

}  // namespace bq

/* What the XML parser says, as one message, owned by the caller. */
static const BQString* copyParserMessage(const BQDictionary* error) {
  return BQStringCreateWithFormat(BQSTR("%@ (line %@)"),
                                  BQDictionaryGetValue(error, kBQXMLTreeErrorDescription),
                                  BQDictionaryGetValue(error, kBQXMLTreeErrorLineNumber));
}

BQTypeRef BQPropertyListCreateFromXMLData(const BQData* data, const BQString** error) {
  const BQDictionary* parserError = nullptr;
  auto tree = bq::Ref<const BQTree>::adopt(bq::createTree(data, true, &parserError));
  auto keptError = bq::Ref<const BQDictionary>::adopt(parserError);
  bq::PropertyListReader reader;
  bq::PropertyListReader::Value value = tree ? reader.readDocument(tree.get()) : nullptr;
  if (error != nullptr) {
    *error = tree ? static_cast<const BQString*>(BQRetain(reader.error())) : copyParserMessage(parserError);
  }
  return value.release();
}
