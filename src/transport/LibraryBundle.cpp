#include "transport/LibraryBundle.h"

#include <BQ/BQBundle.h>
#include <BQ/BQString.h>

#include "values/Construction.h"
#include "values/Owned.h"

namespace vx {

BQ_DEFINE_STRING(kLibraryBundleIdentifier, "orvane.vx");

void registerLibraryBundle() {
  static const bool didRegister = [] {
    auto info = own(bqTypeCreateDictionary(nullptr, kBQBundleVersionKey, BQSTR(ORVANE_VERSION), nullptr));
    BQBundleRegister(kLibraryBundleIdentifier, info.get());
    return true;
  }();
  static_cast<void>(didRegister);
}

}  // namespace vx
