#include "xmlrpc/ValueReader.h"

#include <string_view>

#include <BQ/BQ.h>

#include "xml/Base64.h"
#include "xml/ISODate.h"
#include "xml/Kinds.h"
#include "xml/Text.h"
#include "xml/TreeAccess.h"

namespace vx {
namespace {

/* The elements that a value may hold. */
enum class Element { string, array, structure, boolean, integer, real, date, data, unknown };

bool isNamed(std::string_view name, std::string_view literal) {
  return name == literal || equalIgnoringCase(name, literal);
}

/* The length of a name leaves one or a few candidates. */
Element elementNamed(std::string_view name) {
  auto orUnknown = [name](std::string_view literal, Element element) {
    return isNamed(name, literal) ? element : Element::unknown;
  };
  switch (name.size()) {
    case 2:
      return orUnknown("i4", Element::integer);
    case 3:
      return orUnknown("int", Element::integer);
    case 5:
      return orUnknown("array", Element::array);
    case 6:
      if (isNamed(name, "string")) return Element::string;
      if (isNamed(name, "struct")) return Element::structure;
      if (isNamed(name, "double")) return Element::real;
      return orUnknown("base64", Element::data);
    case 7:
      return orUnknown("boolean", Element::boolean);
    case 16:
      return orUnknown("dateTime.iso8601", Element::date);
    default:
      return Element::unknown;
  }
}

bool isPositive(std::string_view text) {
  static constexpr std::string_view sPositives[] = {"1", "true", "yes", "y", "t"};
  for (std::string_view positive : sPositives) {
    if (equalIgnoringCase(text, positive)) return true;
  }
  return false;
}

Owned<const void> readDouble(std::string_view text) {
  auto string = own(BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size())));
  double real = BQStringGetDoubleValue(string.get());
  return own<const void>(BQNumberCreate(kBQNumberDoubleType, &real));
}

const BQTree* secondChild(const BQTree* first) {
  return BQTreeGetNextSibling(first);
}

}  // namespace

BQTypeRef parseType(const BQTree* value, const BQString** outError) {
  ValueReader reader;
  auto result = reader.read(value);
  *outError = reader.takeError();
  return result.release();
}

Owned<const void> ValueReader::read(const BQTree* value) {
  const BQTree* content = BQTreeGetFirstChild(value);
  if (content == nullptr) return nullptr;
  if (!treeIsElement(content)) return own<const void>(copyXMLStringFromTree(content));
  return readElement(content);
}

Owned<const void> ValueReader::readElement(const BQTree* element) {
  std::string_view name = textOf(element);
  if (name.data() == nullptr) {
    fail(BQSTR("Can't get name of element"));
    return nullptr;
  }
  switch (elementNamed(name)) {
    case Element::string:
      return own<const void>(copyXMLStringFromTree(BQTreeGetFirstChild(element)));
    case Element::array:
      return readArray(element);
    case Element::structure:
      return readStruct(element);
    default:
      return readScalar(element);
  }
}

/* Only the first piece of a scalar's text counts. */
Owned<const void> ValueReader::readScalar(const BQTree* element) {
  std::string_view text = textOf(BQTreeGetFirstChild(element));
  if (text.data() == nullptr) {
    fail(BQStringCreateWithFormat(BQSTR("No value for %@"), getElementName(element)));
    return nullptr;
  }
  switch (elementNamed(textOf(element))) {
    case Element::boolean:
      return own<const void>(isPositive(text) ? kBQBooleanTrue : kBQBooleanFalse);
    case Element::integer:
      return own<const void>(makeIntValueFromString(text));
    case Element::real:
      return readDouble(text);
    case Element::date:
      return own<const void>(isoDecodeDate(text));
    case Element::data:
      return own<const void>(decodeBinaryData(text));
    default:
      fail(BQStringCreateWithFormat(BQSTR("Don't know how to deserialize %@"), getElementName(element)));
      return nullptr;
  }
}

Owned<const void> ValueReader::readArray(const BQTree* array) {
  const BQTree* data = BQTreeGetFirstChild(array);
  if (!isNamed(textOf(data), "data")) {
    fail(BQSTR("<array> should only containa single <data> element"));
    return nullptr;
  }
  auto values = own(BQArrayCreateMutable(0));
  for (const BQTree* child = BQTreeGetFirstChild(data); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    if (!isNamed(textOf(child), "value")) {
      fail(BQSTR("non-value element found in <data> part of <array>"));
      return nullptr;
    }
    auto value = read(child);
    if (failed()) return nullptr;
    BQArrayAppendOwnedValue(values.get(), value != nullptr ? value.release() : BQSTR(""));
  }
  return own<const void>(values.release());
}

Owned<const void> ValueReader::readStruct(const BQTree* structure) {
  auto dictionary = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  for (const BQTree* member = BQTreeGetFirstChild(structure); member != nullptr;
       member = BQTreeGetNextSibling(member)) {
    readMember(member, dictionary.get());
    if (failed()) return nullptr;
  }
  return own<const void>(dictionary.release());
}

void ValueReader::readMember(const BQTree* member, BQDictionary* dictionary) {
  const BQTree* first = BQTreeGetFirstChild(member);
  if (first == nullptr) return fail(BQSTR("empty <member> element"));
  Owned<const BQString> name;
  Owned<const void> value;
  checkStructChild(first, name, value);
  const BQTree* second = secondChild(first);
  if (failed() || second == nullptr) return;
  checkStructChild(second, name, value);
  if (failed()) return;
  if (name == nullptr) return fail(BQSTR("missing <name> element for <member>"));
  BQDictionarySetValue(dictionary, name.get(), value != nullptr ? value.get() : kBQNull);
}

void ValueReader::checkStructChild(const BQTree* child, Owned<const BQString>& name,
                                   Owned<const void>& value) {
  std::string_view element = textOf(child);
  if (isNamed(element, "name")) {
    if (name != nullptr) return fail(BQSTR("too many <name> elements for a <member>"));
    name = readName(BQTreeGetFirstChild(child));
  } else if (isNamed(element, "value")) {
    if (value != nullptr) return fail(BQSTR("too many <value> elements for a <member>"));
    value = read(child);
  } else {
    fail(BQSTR("unknown element in <member>"));
  }
}

Owned<const BQString> ValueReader::readName(const BQTree* text) {
  bool isPlain = BQXMLNodeGetTypeCode(treeGetNode(text)) == kBQXMLNodeTypeText;
  if (!isPlain || BQTreeGetNextSibling(text) != nullptr) return own(copyXMLStringFromTree(text));
  return names_.copyOf(textOf(text));
}

void ValueReader::fail(const BQString* message) {
  if (error_ == nullptr) {
    error_ = own(message);
  } else {
    BQRelease(message);
  }
}

}  // namespace vx
