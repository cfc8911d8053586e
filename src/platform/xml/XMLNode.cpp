#include <BQ/BQXMLNode.h>

#include <cstddef>

#include <vector>

#include <BQ/BQArray.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQRuntime.h>

#include "platform/xml/Tree.h"

namespace bq {
namespace {

const BQString* copyXMLNodeDescription(BQTypeRef object) {
  return copyNodeDescription("BQXMLNode", static_cast<const BQXMLNode*>(object));
}

constexpr BQRuntimeClass kNodeClass = {
    0, "BQXMLNode", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, copyXMLNodeDescription};

bool isNode(const BQXMLNode* node) {
  return isInstance(node, BQXMLNodeGetTypeID());
}

const void* makeTextString(Arena& arena, const void* node) {
  const BQString* string = makeString(static_cast<const BQXMLNode*>(node)->text());
  arena.keep(string);
  return string;
}

/* Of strings outside the arena: one in it that the dictionary retained would keep both alive for ever. */
const void* makeElementInfo(Arena& arena, const void* list) {
  std::vector<const void*> names, values;
  for (const AttributeEntry& entry : static_cast<const AttributeList*>(list)->entries()) {
    names.push_back(makeString(viewOf(entry.name)));
    values.push_back(makeString(viewOf(entry.value)));
  }
  auto count = static_cast<BQIndex>(names.size());
  auto* info = new (arena.allocate(sizeof(BQXMLElementInfo))) BQXMLElementInfo{
      BQDictionaryCreate(names.data(), values.data(), count), BQArrayCreate(names.data(), count)};
  arena.keep(info->attributes);
  arena.keep(info->attributeOrder);
  for (const void* name : names) BQRelease(name);
  for (const void* value : values) BQRelease(value);
  return info;
}

/* Null for anything but an element with attributes. */
const AttributeList* attributesOf(const BQXMLNode* node) {
  if (!isNode(node) || (node->base.flags & kHasAttributes) == 0) return nullptr;
  const char* position = reinterpret_cast<const char*>(node) - offsetof(BQTree, node);
  return static_cast<const ParentWithAttributes*>(reinterpret_cast<const BQTree*>(position))->attributes;
}

constexpr BQXMLElementInfo kNoAttributes{nullptr, nullptr};

}  // namespace

const BQString* copyNodeDescription(const char* className, const BQXMLNode* node) {
  switch (node->type()) {
    case kBQXMLNodeTypeElement:
      return BQStringCreateWithFormat(BQSTR("<%s element %@>"), className, node->string);
    case kBQXMLNodeTypeEntityReference:
      return BQStringCreateWithFormat(BQSTR("<%s entity reference %@>"), className, node->string);
    case kBQXMLNodeTypeText:
      return BQStringCreateWithFormat(BQSTR("<%s text>"), className);
    case kBQXMLNodeTypeCDATASection:
      return BQStringCreateWithFormat(BQSTR("<%s CDATA section>"), className);
    default:
      return BQStringCreateWithFormat(BQSTR("<%s document>"), className);
  }
}

}  // namespace bq

BQTypeID BQXMLNodeGetTypeID(void) {
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&bq::kNodeClass);
  return typeID;
}

BQXMLNodeTypeCode BQXMLNodeGetTypeCode(const BQXMLNode* node) {
  return bq::isNode(node) ? node->type() : BQXMLNodeTypeCode{};
}

const BQString* BQXMLNodeGetString(const BQXMLNode* node) {
  if (!bq::isNode(node)) return nullptr;
  if (!node->isShortText()) return node->string;
  return static_cast<const BQString*>(bq::Arena::of(node)->derive(node, bq::makeTextString));
}

const char* BQXMLNodeGetUTF8(const BQXMLNode* node, BQIndex* length) {
  std::string_view text = bq::isNode(node) ? node->text() : std::string_view();
  if (length != nullptr) *length = static_cast<BQIndex>(text.size());
  return text.data();
}

const void* BQXMLNodeGetInfoPtr(const BQXMLNode* node) {
  if (BQXMLNodeGetTypeCode(node) != kBQXMLNodeTypeElement) return nullptr;
  const bq::AttributeList* attributes = bq::attributesOf(node);
  if (attributes == nullptr) return &bq::kNoAttributes;
  return bq::Arena::of(node)->derive(attributes, bq::makeElementInfo);
}

BQIndex BQXMLNodeGetAttributeCount(const BQXMLNode* node) {
  const bq::AttributeList* attributes = bq::attributesOf(node);
  return attributes == nullptr ? 0 : static_cast<BQIndex>(attributes->count);
}

const BQString* BQXMLNodeGetAttributeAtIndex(const BQXMLNode* node, BQIndex index, const BQString** value) {
  bool inRange = index >= 0 && index < BQXMLNodeGetAttributeCount(node);
  const bq::AttributeEntry attribute =
      inRange ? bq::attributesOf(node)->entries()[static_cast<size_t>(index)] : bq::AttributeEntry{};
  if (value != nullptr) *value = attribute.value;
  return attribute.name;
}
