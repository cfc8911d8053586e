#include <BQ/BQBundle.h>

#include <mutex>
#include <utility>
#include <vector>

#include <BQ/BQDictionary.h>
#include <BQ/BQString.h>

#include "platform/object/Object.h"

struct BQBundle : bq::Object {
  bq::Ref<const BQString> identifier;
  bq::Ref<const BQDictionary> info;

  using Object::Object;
};

namespace bq {
namespace {

const BQRuntimeClass kBundleClass = {0,       "BQBundle", nullptr, nullptr, finalizeObject<BQBundle>,
                                     nullptr, nullptr,    nullptr, nullptr};

/* The records live for the process and are reachable to its end. */
struct Registry {
  std::mutex mutex;
  std::vector<BQBundle*> bundles;

  BQBundle* find(const BQString* identifier) {
    if (!isInstance(identifier, kStringTypeID)) return nullptr;
    for (BQBundle* bundle : bundles) {
      if (BQEqual(bundle->identifier.get(), identifier)) return bundle;
    }
    return nullptr;
  }
};

Registry& registry() {
  static Registry* instance = new Registry;
  return *instance;
}

}  // namespace
}  // namespace bq

BQ_DEFINE_STRING(kBQBundleVersionKey, "BQBundleVersion");

BQTypeID BQBundleGetTypeID(void) {
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&bq::kBundleClass);
  return typeID;
}

void BQBundleRegister(const BQString* identifier, const BQDictionary* info) {
  if (!bq::isInstance(identifier, bq::kStringTypeID) || !bq::isInstance(info, bq::kDictionaryTypeID)) return;
  /* Outside of the lock go the copy and, at the end, what it replaced: its values may look for bundles. */
  auto copy = bq::Ref<const BQDictionary>::adopt(BQDictionaryCreateCopy(info));
  bq::Registry& registry = bq::registry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  BQBundle* bundle = registry.find(identifier);
  if (bundle == nullptr) {
    bundle = bq::makeObject<BQBundle>(BQBundleGetTypeID());
    bundle->identifier = bq::Ref<const BQString>::adopt(BQStringCreateCopy(identifier));
    registry.bundles.push_back(bundle);
  }
  std::swap(bundle->info, copy);
}

BQBundle* BQBundleGetBundleWithIdentifier(const BQString* identifier) {
  bq::Registry& registry = bq::registry();
  std::lock_guard<std::mutex> lock(registry.mutex);
  return registry.find(identifier);
}

const BQDictionary* BQBundleCopyInfoDictionary(BQBundle* bundle) {
  if (!bq::isInstance(bundle, BQBundleGetTypeID())) return nullptr;
  std::lock_guard<std::mutex> lock(bq::registry().mutex);
  return static_cast<const BQDictionary*>(BQRetain(bundle->info.get()));
}
