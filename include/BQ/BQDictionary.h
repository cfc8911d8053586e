/* Dictionaries, which keep the order in which their keys were first set. */
#ifndef BQ_DICTIONARY_H
#define BQ_DICTIONARY_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** What a mutable dictionary does with a new key. */
typedef enum BQDictionaryKeys {
  /** Keeps the key object itself. A key that is changed afterwards is not found again. */
  kBQDictionaryRetainKeys = 0,
  /** Keeps an immutable copy of a string key. */
  kBQDictionaryCopyStringKeys = 1
} BQDictionaryKeys;

/** The identifier of the dictionary class. */
BQ_EXPORT BQTypeID BQDictionaryGetTypeID(void);

/**
 * A new immutable dictionary of `count` pairs, keys and values retained, owned by the caller. A
 * later equal key replaces the value of an earlier one. Pairs with a null key or value are left
 * out. Null if the count is negative.
 */
BQ_EXPORT const BQDictionary* BQDictionaryCreate(const BQTypeRef* keys, const BQTypeRef* values,
                                                 BQIndex count);

/** An immutable shallow copy, owned by the caller; an immutable dictionary is shared. Null for null. */
BQ_EXPORT const BQDictionary* BQDictionaryCreateCopy(const BQDictionary* dictionary);

/** A new empty mutable dictionary with room for `capacity` pairs, owned by the caller; it grows as needed. */
BQ_EXPORT BQDictionary* BQDictionaryCreateMutable(BQIndex capacity, BQDictionaryKeys keys);

/**
 * A mutable shallow copy with room for at least `capacity` pairs, owned by the caller, that keeps
 * keys as the original does. Null for null.
 */
BQ_EXPORT BQDictionary* BQDictionaryCreateMutableCopy(BQIndex capacity, const BQDictionary* dictionary);

/** The number of pairs; 0 for null. */
BQ_EXPORT BQIndex BQDictionaryGetCount(const BQDictionary* dictionary);

/** The value for an equal key, borrowed; null if there is none, or for a null key or dictionary. */
BQ_EXPORT BQTypeRef BQDictionaryGetValue(const BQDictionary* dictionary, BQTypeRef key);

/** Whether an equal key is present. */
BQ_EXPORT bool BQDictionaryContainsKey(const BQDictionary* dictionary, BQTypeRef key);

/**
 * Writes the keys and the values, borrowed, in the dictionary's order, to arrays with room for
 * BQDictionaryGetCount pointers each. Either array may be null.
 */
BQ_EXPORT void BQDictionaryGetKeysAndValues(const BQDictionary* dictionary, BQTypeRef* keys,
                                            BQTypeRef* values);

/** Sets the value for a key; an equal key keeps its place and its object. A null key or value is ignored. */
BQ_EXPORT void BQDictionarySetValue(BQDictionary* dictionary, BQTypeRef key, BQTypeRef value);

/** Adds a pair only if no equal key is present. A null key or value is ignored. */
BQ_EXPORT void BQDictionaryAddValue(BQDictionary* dictionary, BQTypeRef key, BQTypeRef value);

/** Removes the pair with an equal key, if there is one. */
BQ_EXPORT void BQDictionaryRemoveValue(BQDictionary* dictionary, BQTypeRef key);

/** Empties a mutable dictionary. */
BQ_EXPORT void BQDictionaryRemoveAllValues(BQDictionary* dictionary);

BQ_EXTERN_C_END

#endif
