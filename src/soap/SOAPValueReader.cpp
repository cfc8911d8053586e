#include "soap/SOAPValueReader.h"

#include <algorithm>
#include <utility>

#include <BQ/BQ.h>

#include "diag/Log.h"
#include "diag/Switches.h"
#include "soap/RepeatingDictionary.h"
#include "soap/SOAPProtocolHandler.h"
#include "xml/Base64.h"
#include "xml/ElementWalk.h"
#include "xml/ISODate.h"
#include "xml/Kinds.h"
#include "xml/QualifiedName.h"
#include "xml/SOAPNamespaces.h"
#include "xml/Text.h"
#include "xml/TreeAccess.h"

namespace vx {
namespace {

constexpr size_t kMaximumDepth = 512; /* with references followed */

/* Text between elements is the name of a value. The parser bounds only different names of elements. */
constexpr size_t kMostTextNames = 16384;

/* Namespaces are compared and copied for each element that uses them. */
constexpr size_t kLongestNamespace = 4096;

/* What reading these again costs besides their bytes. */
constexpr long kElementWeight = 96;
constexpr long kAttributeWeight = 32;
constexpr long kChildWeight = 8;

/* The types of elements that do not tell theirs. */
BQ_DEFINE_STATIC_STRING(arrayType, "http://www.w3.org/2001/XMLSchema|Array");
BQ_DEFINE_STATIC_STRING(stringType, "http://www.w3.org/2001/XMLSchema|string");
BQ_DEFINE_STATIC_STRING(dictionaryType, "http://www.w3.org/2001/XMLSchema|Dictionary");

Owned<const void> makeDouble(std::string_view text) {
  auto string = own(BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size())));
  double real = BQStringGetDoubleValue(string.get());
  return own<const void>(BQNumberCreate(kBQNumberDoubleType, &real));
}

Owned<const void> makeBoolean(bool value) {
  return own<const void>(value ? kBQBooleanTrue : kBQBooleanFalse);
}

bool isNamed(std::string_view text, std::string_view name) {
  return equalIgnoringCase(text, name);
}

bool isContainer(VXTypeID kind) {
  return kind == kVXTypeArray || kind == kVXTypeDictionary;
}

bool isSchemaNamespace(const BQString* uri) {
  return BQStringEqualsIgnoringCase(uri, VX_SOAP_1999_SCHEMA_NAMESPACE) ||
         BQStringEqualsIgnoringCase(uri, VX_SOAP_2001_SCHEMA_NAMESPACE);
}

bool isEncodingNamespace(const BQString* uri) {
  return BQStringEqualsIgnoringCase(uri, VX_SOAP_2001_ENCODING_NAMESPACE);
}

/* Whether an attribute of that name is in the namespace, unprefixed ones being in the default one. */
bool isInNamespace(const BQString* name, const NamespaceMap& namespaces, const BQString* namespaceURI) {
  const BQString* uri = nullptr;
  const BQString* local = nullptr;
  xmlNamespaceQualify(namespaces, name, &uri, &local);
  auto ownedURI = own(uri);
  auto ownedLocal = own(local);
  return BQStringEqualsIgnoringCase(uri, namespaceURI);
}

/* The bytes of an element that its value and the name of it can hold. */
long textIn(const BQTree* element) {
  size_t bytes = textOf(element).size();
  for (const BQTree* child = BQTreeGetFirstChild(element); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    if (!treeIsElement(child)) bytes += textOf(child).size();
  }
  return static_cast<long>(bytes);
}

/* The bytes of an element's attributes, and `each` for every one of them. */
long weightOfAttributes(const BQTree* element, long each) {
  long weight = 0;
  for (BQIndex i = 0, count = attributeCount(element); i < count; ++i) {
    auto [name, value] = attributeAt(element, i);
    weight += each + BQStringGetLength(name) + BQStringGetLength(value);
  }
  return weight;
}

/* All that reading an element looks at, without what its child elements hold. */
long weightOf(const BQTree* element) {
  return kElementWeight + textIn(element) + weightOfAttributes(element, kAttributeWeight) +
         kChildWeight * BQTreeGetChildCount(element);
}

/* The bytes of names, attributes and texts below an element. */
long bytesBelow(const BQTree* element) {
  long bytes = 0;
  std::vector<const BQTree*> next = {BQTreeGetFirstChild(element)};
  while (!next.empty()) {
    const BQTree* tree = next.back();
    if (tree == nullptr) {
      next.pop_back();
      continue;
    }
    next.back() = BQTreeGetNextSibling(tree);
    next.push_back(BQTreeGetFirstChild(tree));
    bytes += static_cast<long>(textOf(tree).size()) + weightOfAttributes(tree, 0);
  }
  return bytes;
}

std::string_view localPart(std::string_view name) {
  size_t colon = name.find(':');
  return colon == std::string_view::npos || colon == 0 ? name : name.substr(colon + 1);
}

}  // namespace

const BQString* getNodeAttribute(const BQTree* element, const NamespaceMap& namespaces,
                                 const BQString* namespaceURI, std::string_view localName) {
  for (BQIndex i = 0, count = attributeCount(element); i < count; ++i) {
    auto [name, value] = attributeAt(element, i);
    if (!equalIgnoringCase(localPart(textOf(name)), localName)) continue;
    if (namespaceURI != nullptr && !isInNamespace(name, namespaces, namespaceURI)) continue;
    return value;
  }
  return nullptr;
}

const BQString* getSoapNodeAttribute(const BQTree* element, const NamespaceMap& namespaces,
                                     std::string_view localName) {
  /* The look in any namespace is cheap and mostly decides. */
  if (getNodeAttribute(element, namespaces, nullptr, localName) == nullptr) return nullptr;
  for (const BQString* uri :
       {VX_SOAP_1999_SCHEMA_INSTANCE_NAMESPACE, VX_SOAP_2001_SCHEMA_INSTANCE_NAMESPACE}) {
    if (const BQString* value = getNodeAttribute(element, namespaces, uri, localName)) return value;
  }
  auto* defaultNamespace = static_cast<const BQString*>(namespaces.getValue(kDefaultNamespaceKey));
  return getNodeAttribute(element, namespaces, defaultNamespace, localName);
}

bool isArray(const BQTree* element, const NamespaceMap& namespaces) {
  return getNodeAttribute(element, namespaces, VX_SOAP_1999_ENCODING_NAMESPACE, "arrayType") != nullptr ||
         getNodeAttribute(element, namespaces, VX_SOAP_2001_ENCODING_NAMESPACE, "arrayType") != nullptr;
}

/* The value of an element that has no content. */
static Owned<const void> makeEmpty(const BQTree* element, const NamespaceMap& namespaces) {
  if (isArray(element, namespaces)) return own<const void>(BQArrayCreate(nullptr, 0));
  return own<const void>(kBQNull);
}

SOAPValueReader::SOAPValueReader(const BQTree* root, SOAPProtocolHandler* handler, ReferenceBudget* budget)
    : root_(root),
      handler_(*handler),
      budget_(*budget),
      hasOverrides_(handler->hasDeserializationOverrides()),
      anchors_(root) {}

const BQTree* SOAPValueReader::Subject::firstChild() const {
  return BQTreeGetFirstChild(element);
}

std::string_view SOAPValueReader::Subject::text() const {
  return textOf(firstChild());
}

Owned<const BQString> SOAPValueReader::copyName(const BQTree* element) {
  if (!treeIsElement(element) && ++textNames_ > kMostTextNames) fail(BQSTR("Too much text between elements"));
  return names_.copyOf(textOf(element));
}

/* Keeps the first message; false. */
bool SOAPValueReader::fail(const BQString* message) {
  if (error_ == nullptr) {
    error_ = own(message);
  } else {
    BQRelease(message);
  }
  return false;
}

/*
 * Bounds the work on a document. An element that refers to another and the one that it refers to are
 * one level of values.
 */
bool SOAPValueReader::enter(const BQTree* element, const NamespaceMap& namespaces) {
  if (depth() >= kMaximumDepth) return fail(BQSTR("Values are nested too deep"));
  if (namespaces.longestNamespace() > kLongestNamespace) return fail(BQSTR("A namespace is too long"));
  /* The next method of a reply does not get to look at what the last one could not afford. */
  if (references_ > 0 && budget_.spent != nullptr) return fail(budget_.spent);
  if (references_ > 0 && !spend({1, textIn(element)}, repeats_ > 0)) return false;
  if (repeats_ > 0 && !spendOnRereading(element)) return false;
  inProgress_.push_back(element);
  return true;
}

bool SOAPValueReader::spend(Cost cost, bool isRepeated) {
  cost_.elements += cost.elements;
  cost_.text += cost.text;
  if ((budget_.elements -= cost.elements) < 0) {
    return exhaust(BQSTR("Too many elements are read through references"));
  }
  if (isRepeated && (budget_.text -= cost.text) < 0) {
    return exhaust(BQSTR("Too much text is read through repeated references"));
  }
  return true;
}

/* The body is measured only if a message reads more again than most do. */
bool SOAPValueReader::spendOnRereading(const BQTree* element) {
  budget_.rereading -= weightOf(element);
  if (budget_.rereading < 0 && !std::exchange(isBodyCredited_, true)) {
    budget_.rereading += ReferenceBudget::kRereadingsOfBody * bytesBelow(root_);
  }
  return budget_.rereading >= 0 || exhaust(BQSTR("Too much is read again through references"));
}

bool SOAPValueReader::exhaust(const BQString* message) {
  budget_.spent = message;
  return fail(message);
}

Owned<const void> SOAPValueReader::parseParameter(const BQTree* element, NamespaceMap& namespaces) {
  if (hasOverrides_) {
    NamespaceMap::Scope scope(namespaces);
    xmlGetElementNamespaces(element, &namespaces);
    if (auto value = readByOverride(element, namespaces)) return value;
  }
  return parseSOAPType(element, namespaces);
}

Owned<const void> SOAPValueReader::parseSOAPType(const BQTree* element, NamespaceMap& namespaces) {
  if (!enter(element, namespaces)) return nullptr;
  NamespaceMap::Scope scope(namespaces);
  xmlGetElementNamespaces(element, &namespaces);
  const BQTree* child = BQTreeGetFirstChild(element);
  auto value = readByOverride(element, namespaces);
  if (value == nullptr && child != nullptr) value = readByOverride(child, namespaces);
  if (value == nullptr && child != nullptr) {
    value = readSubject({element, namespaces});
  } else if (value == nullptr) {
    const BQString* reference = getSoapNodeAttribute(element, namespaces, "href");
    value = reference != nullptr ? readReference(reference, namespaces) : makeEmpty(element, namespaces);
  }
  inProgress_.pop_back();
  return value;
}

Owned<const void> SOAPValueReader::readByOverride(const BQTree* element, const NamespaceMap& namespaces) {
  if (!hasOverrides_) return nullptr;
  return own(handler_.deserilizeOverride(element, namespaces, getElementName(element), root_));
}

/* The element that a reference leads to; null, and a message, if it must not be read. */
const BQTree* SOAPValueReader::findAnchor(const BQString* reference, const NamespaceMap& namespaces) {
  BQIndex length = BQStringGetLength(reference);
  BQIndex start = textOf(reference).starts_with('#') ? 1 : 0;
  auto id = own(BQStringCreateSubstring(reference, BQRangeMake(start, length - start)));
  const BQTree* anchor = anchors_.find(id.get(), namespaces);
  if (anchor == nullptr) {
    fail(BQSTR("Can't locate anchor element in reply"));
  } else if (std::find(inProgress_.begin(), inProgress_.end(), anchor) != inProgress_.end()) {
    fail(BQSTR("A reference leads back to the element that holds it"));
    return nullptr;
  }
  return anchor;
}

Owned<const void> SOAPValueReader::readReference(const BQString* reference, NamespaceMap& namespaces) {
  const BQTree* anchor = findAnchor(reference, namespaces);
  if (anchor == nullptr) return nullptr;
  const auto [found, isFirst] = readings_.try_emplace(anchor);
  Reading& reading = found->second;
  if (reading.value != nullptr && reading.namespaces == namespaces.version() && depth() <= reading.depth) {
    return share(reading);
  }
  reading = {nullptr, namespaces.version(), depth(), handler_.countReadingOverrideCalls(), cost_};
  ++references_;
  repeats_ += isFirst ? 0 : 1;
  Owned<const void> value;
  if (enter(anchor, namespaces)) {
    xmlGetElementNamespaces(anchor, &namespaces);
    value = readSubject({anchor, namespaces});
    inProgress_.pop_back();
  }
  repeats_ -= isFirst ? 0 : 1;
  --references_;
  reading.cost = {cost_.elements - reading.cost.elements, cost_.text - reading.cost.text};
  /* An override may answer differently each time, and its answer may be mutable. */
  if (!failed() && reading.overrideCalls == handler_.countReadingOverrideCalls()) reading.value = value;
  return value;
}

/* The value of an earlier reading at the same depth or deeper. */
Owned<const void> SOAPValueReader::share(const Reading& reading) {
  return spend(reading.cost, true) ? reading.value : nullptr;
}

const BQString* SOAPValueReader::typeNameOf(const Subject& subject) {
  if (const BQString* type = getSoapNodeAttribute(subject.element, subject.namespaces, "type")) return type;
  if (isArray(subject.element, subject.namespaces)) return arrayType;
  return treeIsElement(subject.firstChild()) ? dictionaryType : stringType;
}

/*
 * Containers are read from here and nowhere else: each further function on the way from one level to
 * the next would be on the stack 512 times.
 */
Owned<const void> SOAPValueReader::readSubject(const Subject& subject) {
  const BQString* typeName = typeNameOf(subject);
  VXTypeID kind = types_.kindOf(typeName, subject.namespaces);
  auto value = readScalar(kind, subject);
  if (value == nullptr && !isContainer(kind)) value = readBySlowPath(typeName, subject, &kind);
  if (value == nullptr && !isContainer(kind) && !failed()) value = readFallback(subject, &kind);
  if (value != nullptr || failed()) return value;
  return kind == kVXTypeArray ? parseSOAPArray(subject) : parseSOAPDictionary(subject);
}

Owned<const void> SOAPValueReader::readScalar(VXTypeID kind, const Subject& subject) {
  std::string_view text = subject.text();
  switch (kind) {
    case kVXTypeNull:
      return own<const void>(kBQNull);
    case kVXTypeBoolean:
      return makeBoolean(!isNamed(text, "0") && !isNamed(text, "false"));
    case kVXTypeInteger:
      return own<const void>(makeIntValueFromString(text));
    case kVXTypeDouble:
      return makeDouble(text);
    case kVXTypeString:
      return own<const void>(copyXMLStringFromTree(subject.firstChild()));
    case kVXTypeDate:
      return own<const void>(isoDecodeDate(text));
    case kVXTypeData:
      return own<const void>(decodeBinaryData(text));
    case kVXTypeArray:
    case kVXTypeDictionary:
    case kVXTypeUnknown:
      return nullptr;
  }
  return nullptr;
}

/* The value, or null and perhaps the kind of a container. */
Owned<const void> SOAPValueReader::readBySlowPath(const BQString* typeName, const Subject& subject,
                                                  VXTypeID* kind) {
  if (gVXDebug != 0) vxPrintf(BQSTR("####: NOTE: couldn't short circuit for %@"), onOneLine(typeName).get());
  if (gVXDebugVerbose != 0) _vxLogf("parseSOAPType: got a type: %@", onOneLine(typeName).get());
  const BQString* uri = nullptr;
  const BQString* local = nullptr;
  xmlNamespaceQualify(subject.namespaces, typeName, &uri, &local);
  auto ownedURI = own(uri);
  auto ownedLocal = own(local);
  std::string_view type = textOf(local);
  bool isEncoding = isEncodingNamespace(uri);
  if (isEncoding && isNamed(type, "Dictionary")) *kind = kVXTypeDictionary;
  if (isEncoding && isNamed(type, "Array")) *kind = kVXTypeArray;
  if (isContainer(*kind)) return nullptr;
  if (isEncoding || isSchemaNamespace(uri))
    return readSchemaType(isEncoding ? std::string_view() : type, local, subject);
  return nullptr;
}

/* `type` is empty for a name of the encoding namespace, where only the binary types are left. */
Owned<const void> SOAPValueReader::readSchemaType(std::string_view type, const BQString* typeName,
                                                  const Subject& subject) {
  std::string_view text = subject.text();
  if (isNamed(type, "string")) return own<const void>(copyXMLStringFromTree(subject.firstChild()));
  if (!type.empty() && text.data() == nullptr) {
    fail(BQStringCreateWithFormat(BQSTR("No value for %@"), typeName));
    return nullptr;
  }
  if (isNamed(type, "boolean")) {
    return makeBoolean(!isNamed(text, "0") && !isNamed(text, "false") && !isNamed(text, "nil"));
  }
  if (isNamed(type, "i4") || isNamed(type, "int")) return own<const void>(makeIntValueFromString(text));
  if (isNamed(type, "double") || isNamed(type, "float")) return makeDouble(text);
  if (isNamed(type, "timeInstant")) return own<const void>(isoDecodeDate(text));
  bool isBinary = isNamed(textOf(typeName), "base64") || isNamed(textOf(typeName), "base64Binary");
  return isBinary ? own<const void>(decodeBinaryData(text)) : nullptr;
}

/* A text, or null and the kind of a container. */
Owned<const void> SOAPValueReader::readFallback(const Subject& subject, VXTypeID* kind) {
  *kind = isArray(subject.element, subject.namespaces) ? kVXTypeArray : kVXTypeDictionary;
  const BQTree* child = subject.firstChild();
  bool mayBeText = *kind == kVXTypeDictionary && child != nullptr && BQTreeGetNextSibling(child) == nullptr;
  return mayBeText ? own<const void>(copyXMLStringFromTree(child)) : nullptr;
}

Owned<const void> SOAPValueReader::parseSOAPArray(const Subject& subject) {
  if (gVXDebugVerbose != 0) _vxLogf("in parseSOAPArray\n");
  auto values = own(BQArrayCreateMutable(0));
  for (const BQTree* child = subject.firstChild(); child != nullptr; child = BQTreeGetNextSibling(child)) {
    auto value = parseSOAPType(child, subject.namespaces);
    if (failed()) break;
    if (value != nullptr) BQArrayAppendOwnedValue(values.get(), value.release());
  }
  return own<const void>(values.release());
}

Owned<const void> SOAPValueReader::parseSOAPDictionary(const Subject& subject) {
  if (gVXDebugVerbose != 0) _vxLogf("in parseSOAPDictionary\n");
  RepeatingDictionary dictionary;
  for (const BQTree* child = subject.firstChild(); child != nullptr; child = BQTreeGetNextSibling(child)) {
    auto value = parseSOAPType(child, subject.namespaces);
    if (value != nullptr) dictionary.add(copyName(child).get(), value.get());
    if (failed()) break;
  }
  return dictionary.take();
}

}  // namespace vx
