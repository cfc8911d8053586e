#include <BQ/BQXMLNode.h>

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

}  // namespace

const BQString* copyNodeDescription(const char* className, const BQXMLNode* node) {
  switch (BQXMLNodeGetTypeCode(node)) {
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
  return static_cast<BQXMLNodeTypeCode>(bq::isNode(node) ? node->base.flags >> bq::kNodeTypeShift : 0);
}

const BQString* BQXMLNodeGetString(const BQXMLNode* node) {
  return bq::isNode(node) ? node->string : nullptr;
}

const void* BQXMLNodeGetInfoPtr(const BQXMLNode* node) {
  return bq::isNode(node) ? node->info : nullptr;
}
