/* A program that knows the libraries only through a plug-in. */
#include <gtest/gtest.h>

#include <cstdlib>

#include <dlfcn.h>

namespace {

TEST(PlugIn, MayBeUnloadedAfterItsCallsButNotTheLibraries) {
  const auto run = [] {
    void* plugIn = dlopen(ORVANE_PLUG_IN, RTLD_NOW | RTLD_LOCAL);
    void* makeCall = plugIn != nullptr ? dlsym(plugIn, "makeCall") : nullptr;
    if (makeCall == nullptr || reinterpret_cast<int (*)()>(makeCall)() != 1) std::abort();
    dlclose(plugIn);
    bool isStillLoaded = dlopen(ORVANE_LIBVX, RTLD_NOW | RTLD_NOLOAD) != nullptr;
    std::exit(isStillLoaded ? 0 : 1);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

}  // namespace
