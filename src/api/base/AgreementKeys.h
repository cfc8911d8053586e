/* The keys of a serialized invocation. */
#ifndef VX_API_BASE_AGREEMENT_KEYS_H
#define VX_API_BASE_AGREEMENT_KEYS_H

#include <BQ/BQDictionary.h>
#include <BQ/BQObject.h>

namespace vx {

extern const BQString* const kAgreementProtocolType; /* "ProtocolType" */
extern const BQString* const kAgreementMethodName;   /* "MethodName" */
extern const BQString* const kAgreementServiceURL;   /* "ServiceURL" */
extern const BQString* const kAgreementParamOrder;   /* "ParamOrder" */
extern const BQString* const kAgreementParamValues;  /* "ParamValues" */
extern const BQString* const kAgreementProperties;   /* "Properties" */

/* An entry, borrowed; null if it is missing or of another class: serialized bytes are not trusted. */
template <class T>
const T* getAgreementEntry(const BQDictionary* agreement, const BQString* key, BQTypeID typeID) {
  BQTypeRef value = BQDictionaryGetValue(agreement, key);
  return BQGetTypeID(value) == typeID ? static_cast<const T*>(value) : nullptr;
}

}  // namespace vx

#endif
