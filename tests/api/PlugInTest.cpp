/* A program that knows the libraries only through a plug-in. */
#include <gtest/gtest.h>

#include <cstdlib>

#include <dlfcn.h>

TEST(PlugIn, MayBeUnloadedButNotTheLibraries) {
  const auto run = [] {
    void* plugIn = dlopen(ORVANE_PLUG_IN, RTLD_NOW | RTLD_LOCAL);
    void* use = plugIn != nullptr ? dlsym(plugIn, "useLibraries") : nullptr;
    bool isUsed = use != nullptr && reinterpret_cast<bool (*)()>(use)() && dlclose(plugIn) == 0;
    std::exit(isUsed && dlopen(ORVANE_LIBVX, RTLD_NOW | RTLD_NOLOAD) != nullptr ? 0 : 1);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
