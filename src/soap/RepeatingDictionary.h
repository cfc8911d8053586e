/* A dictionary in which the values of a repeated name become an array. */
#ifndef VX_SOAP_REPEATING_DICTIONARY_H
#define VX_SOAP_REPEATING_DICTIONARY_H

#include <BQ/BQBase.h>

#include <memory>
#include <unordered_set>

#include "values/Owned.h"

namespace vx {

/* Small, since one is on the stack for each level of a document. */
class RepeatingDictionary {
 public:
  RepeatingDictionary();

  void add(const BQString* name, BQTypeRef value);
  /* The dictionary, after which there is none here. */
  Owned<const void> take();

 private:
  bool isMade(BQTypeRef array) const;
  BQTypeRef replace(const BQString* name, BQTypeRef present);

  Owned<BQDictionary> dictionary_;
  /* The arrays of repeated names; null as long as there are none. */
  std::unique_ptr<std::unordered_set<BQTypeRef>> made_;
};

}  // namespace vx

#endif
