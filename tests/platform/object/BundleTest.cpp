#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include "support/PlatformValues.h"

namespace {

using namespace values;

bq::Ref<BQDictionary> version(const BQString* number) {
  auto info = own(BQDictionaryCreateMutable(1, kBQDictionaryRetainKeys));
  BQDictionarySetValue(info.get(), kBQBundleVersionKey, number);
  return info;
}

std::string versionOf(BQBundle* bundle) {
  auto info = own(BQBundleCopyInfoDictionary(bundle));
  return text(static_cast<const BQString*>(BQDictionaryGetValue(info.get(), kBQBundleVersionKey)));
}

TEST(Bundle, RecordStaysWhileItsDictionaryIsReplaced) {
  auto identifier = mutableString("test.replaced");
  auto info = version(BQSTR("1"));
  BQBundleRegister(identifier.get(), info.get());
  BQStringAppend(identifier.get(), BQSTR(".changed"));
  BQDictionaryRemoveAllValues(info.get());
  BQBundle* bundle = BQBundleGetBundleWithIdentifier(BQSTR("test.replaced"));
  ASSERT_NE(bundle, nullptr);
  EXPECT_EQ(versionOf(bundle), "1");
  BQBundleRegister(BQSTR("test.replaced"), version(BQSTR("2")).get());
  EXPECT_EQ(BQBundleGetBundleWithIdentifier(BQSTR("test.replaced")), bundle);
  EXPECT_EQ(versionOf(bundle), "2");
}

TEST(Bundle, NonsenseIsIgnored) {
  auto info = version(BQSTR("1"));
  BQBundleRegister(nullptr, info.get());
  BQBundleRegister(reinterpret_cast<const BQString*>(kBQNull), info.get());
  BQBundleRegister(BQSTR("test.nonsense"), nullptr);
  BQBundleRegister(BQSTR("test.nonsense"), reinterpret_cast<const BQDictionary*>(kBQNull));
  EXPECT_EQ(BQBundleGetBundleWithIdentifier(nullptr), nullptr);
  EXPECT_EQ(BQBundleGetBundleWithIdentifier(reinterpret_cast<const BQString*>(kBQNull)), nullptr);
  EXPECT_EQ(BQBundleGetBundleWithIdentifier(BQSTR("test.nonsense")), nullptr);
  EXPECT_EQ(BQBundleCopyInfoDictionary(nullptr), nullptr);
  EXPECT_EQ(BQBundleCopyInfoDictionary(reinterpret_cast<BQBundle*>(info.get())), nullptr);
}

/* A dictionary that goes away when it is replaced may hold what itself looks for bundles. */
TEST(Bundle, ReplacedDictionaryMayUseBundlesWhileItIsDestroyed) {
  const auto visit = [](BQTypeRef) { BQBundleGetBundleWithIdentifier(BQSTR("test.visited")); };
  static const BQRuntimeClass kClass = {0,       "Visitor", nullptr, nullptr, visit,
                                        nullptr, nullptr,   nullptr, nullptr};
  auto info = own(BQDictionaryCreateMutable(1, kBQDictionaryRetainKeys));
  BQDictionarySetValue(info.get(), BQSTR("visitor"),
                       Value::adopt(_BQRuntimeCreateInstance(_BQRuntimeRegisterClass(&kClass), 0)).get());
  BQBundleRegister(BQSTR("test.visited"), info.get());
  info = nullptr;
  BQBundleRegister(BQSTR("test.visited"), version(BQSTR("2")).get());
  EXPECT_EQ(versionOf(BQBundleGetBundleWithIdentifier(BQSTR("test.visited"))), "2");
}

}  // namespace
