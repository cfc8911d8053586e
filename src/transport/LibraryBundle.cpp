#include "transport/LibraryBundle.h"

#include <BQ/BQBundle.h>
#include <BQ/BQString.h>

#include "values/Construction.h"
#include "values/Owned.h"

namespace vx {
namespace {

BQ_DEFINE_STATIC_STRING(identifier, "orvane.vx");

}  // namespace

const BQString* const kLibraryBundleIdentifier = identifier;

void registerLibraryBundle() {
  static bool didRegister = false;
  if (didRegister) return;
  didRegister = true;
  auto info = own(bqTypeCreateDictionary(nullptr, kBQBundleVersionKey, BQSTR(ORVANE_VERSION), nullptr));
  BQBundleRegister(kLibraryBundleIdentifier, info.get());
}

}  // namespace vx
