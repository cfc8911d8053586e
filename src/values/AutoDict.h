/* Holds a dictionary, which is shared until it is written to for the first time. */
#ifndef VX_VALUES_AUTO_DICT_H
#define VX_VALUES_AUTO_DICT_H

#include "values/AutoCountable.h"
#include "values/AutoString.h"

namespace vx {

class AutoDict : public AutoCountable {
 public:
  /* Nothing is allocated. */
  AutoDict() = default;
  /* Takes over the caller's reference; may be null. */
  explicit AutoDict(BQDictionary* dictionary) : mutableDict(dictionary) {}
  /* Retains the dictionary, if there is one. */
  explicit AutoDict(const BQDictionary* dictionary);
  /*
   * Shares the other's dictionary. Until this holder writes, it sees what is written through the
   * other one.
   */
  AutoDict(const AutoDict& other);
  ~AutoDict() override;

  bool isEmpty() const override { return getCount() == 0; }
  BQTypeRef getRef() override { return getMutableDict(); }

  /* The dictionary for reading, borrowed: the shared empty dictionary if there is none. */
  const BQDictionary* getImmutableDict() const;
  /* The dictionary for writing, borrowed: a private copy of a shared one. */
  BQDictionary* getMutableDict();
  /* The dictionary for reading, retained for the caller. */
  const BQDictionary* copyDict() const;
  /* Null values are ignored and remove nothing. */
  void addValue(const BQString* key, const void* value);
  /* Borrowed; null if there is none. */
  BQTypeRef getValue(const BQString* key) const;
  BQTypeRef getValue(const AutoString& key) const { return getValue(key.get()); }
  BQIndex getCount() const;

 private:
  static BQDictionary* sEmptyDictionary;
  static const BQDictionary* emptyDictionary();

  const BQDictionary* immutableDict = nullptr;
  BQDictionary* mutableDict = nullptr;
};

}  // namespace vx

#endif
