#include <string_view>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "values/AutoArray.h"
#include "values/Construction.h"
#include "xml/Kinds.h"
#include "xml/Text.h"
#include "xmlrpc/ValueWriter.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace vx {
namespace {

/* The names of the parameters to write. */
Owned<const BQArray> parameterNames(const BQDictionary* params, const BQArray* parameterOrder) {
  if (parameterOrder != nullptr) return retain(parameterOrder);
  if (params == nullptr) return retain(AutoArray::emptyArray());
  BQTypeRef order = BQDictionaryGetValue(params, kVXRecordParameterOrder);
  if (BQGetTypeID(order) == BQArrayGetTypeID()) return retain(static_cast<const BQArray*>(order));
  return own(copyDictionaryKeys(params));
}

unsigned long encodingOf(const BQDictionary* request) {
  if (request == nullptr) return kDefaultEncoding;
  return static_cast<uint32_t>(getDictNumber(request, kVXRequestTextEncoding, kDefaultEncoding));
}

/* The first of two entries that is present, or the fallback; borrowed. */
BQTypeRef entryOf(const BQDictionary* fault, const BQString* name, const BQString* key, BQTypeRef fallback) {
  if (BQTypeRef value = BQDictionaryGetValue(fault, name)) return value;
  BQTypeRef value = BQDictionaryGetValue(fault, key);
  return value != nullptr ? value : fallback;
}

/* The struct that a fault is sent as. */
Owned<BQDictionary> makeFaultStruct(const BQDictionary* fault) {
  int unknownCode = -1;
  auto unknownCodeNumber = own(BQNumberCreate(kBQNumberIntType, &unknownCode));
  auto members = own(BQDictionaryCreateMutable(3, kBQDictionaryRetainKeys));
  BQDictionarySetValue(members.get(), BQSTR("faultCode"),
                       entryOf(fault, BQSTR("faultCode"), kVXFaultCode, unknownCodeNumber.get()));
  BQDictionarySetValue(members.get(), BQSTR("faultString"),
                       entryOf(fault, BQSTR("faultString"), kVXFaultString, BQSTR("Unknown Fault")));
  if (BQTypeRef extra = BQDictionaryGetValue(fault, kVXFaultExtra)) {
    BQDictionarySetValue(members.get(), BQSTR("faultExtra"),
                         entryOf(fault, BQSTR("faultExtra"), kVXFaultExtra, extra));
  }
  return members;
}

}  // namespace

void XMLRPCProtocolHandler::serialize(XMLBuffer* buffer, int level, const void* value) {
  ValueWriter(buffer, this).write(level, value);
}

const BQData* XMLRPCProtocolHandler::createRequest(const BQString* methodName, const BQDictionary* params,
                                                   const BQArray* parameterOrder, const BQDictionary*) {
  if (methodName == nullptr) return nullptr;
  XMLBuffer buffer(kDefaultEncoding);
  ValueWriter writer(&buffer, this);
  buffer.addLine(1, {"<methodCall>"});
  buffer.addLine(2, {"<methodName>", textOf(methodName), "</methodName>"});
  auto names = parameterNames(params, parameterOrder);
  BQIndex count = BQArrayGetCount(names.get());
  if (count > 0) buffer.addLine(2, {"<params>"});
  for (BQIndex i = 0; i < count; ++i) {
    buffer.addLine(3, {"<param>"});
    writer.write(5, BQDictionaryGetValue(params, BQArrayGetValueAtIndex(names.get(), i)));
    buffer.addLine(3, {"</param>"});
  }
  if (count > 0) buffer.addLine(2, {"</params>"});
  buffer.addLine(1, {"</methodCall>"});
  return buffer.copyData();
}

const BQData* XMLRPCProtocolHandler::createReply(const BQDictionary* request, const void* result) {
  XMLBuffer buffer(encodingOf(request));
  buffer.addLine(0, {"<methodResponse>"});
  if (result != nullptr) {
    buffer.addLine(1, {"<params>"});
    buffer.addLine(2, {"<param>"});
    serialize(&buffer, 3, result);
    buffer.addLine(2, {"</param>"});
    buffer.addLine(1, {"</params>"});
  }
  buffer.addLine(0, {"</methodResponse>"});
  return buffer.copyData();
}

const BQData* XMLRPCProtocolHandler::createFault(const BQDictionary* request, const BQDictionary* fault) {
  XMLBuffer buffer(encodingOf(request));
  buffer.addLine(0, {"<methodResponse>"});
  buffer.addLine(1, {"<fault>"});
  if (fault != nullptr) serialize(&buffer, 2, makeFaultStruct(fault).get());
  buffer.addLine(1, {"</fault>"});
  buffer.addLine(0, {"</methodResponse>"});
  return buffer.copyData();
}

}  // namespace vx
