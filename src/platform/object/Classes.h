/* The records of the classes with fixed identifiers. */
#ifndef BQ_OBJECT_CLASSES_H
#define BQ_OBJECT_CLASSES_H

#include <BQ/BQRuntime.h>

namespace bq {

extern const BQRuntimeClass kStringClass;
extern const BQRuntimeClass kNullClass;
extern const BQRuntimeClass kBooleanClass;
extern const BQRuntimeClass kNumberClass;
extern const BQRuntimeClass kDateClass;
extern const BQRuntimeClass kDataClass;
extern const BQRuntimeClass kArrayClass;
extern const BQRuntimeClass kDictionaryClass;

/* The record of a class; null for an identifier that is not registered. */
const BQRuntimeClass* classOf(BQTypeID typeID);

}  // namespace bq

#endif
