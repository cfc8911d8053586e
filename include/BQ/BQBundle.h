/* The records by which libraries of the process make themselves known. */
#ifndef BQ_BUNDLE_H
#define BQ_BUNDLE_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The key of the version, a string, in a bundle's dictionary. */
BQ_EXPORT extern const BQString* const kBQBundleVersionKey;

/** The identifier of the bundle class. */
BQ_EXPORT BQTypeID BQBundleGetTypeID(void);

/** Makes a record, or replaces the dictionary of an existing one. Null arguments are ignored. Any thread. */
BQ_EXPORT void BQBundleRegister(const BQString* identifier, const BQDictionary* info);

/** The record with an identifier, borrowed, lives for the process; null if there is none. Any thread. */
BQ_EXPORT BQBundle* BQBundleGetBundleWithIdentifier(const BQString* identifier);

/** The dictionary of a record, owned by the caller; null for null. Any thread. */
BQ_EXPORT const BQDictionary* BQBundleCopyInfoDictionary(BQBundle* bundle);

BQ_EXTERN_C_END

#endif
