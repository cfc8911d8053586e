#include "api/base/VXSerializerBase.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"

namespace {

using namespace support;
using vx::VXSerializerBase;

TEST(SerializerBase, PropertiesAreFoundByTextAndRemovedByNull) {
  VXSerializerBase base;
  Value key = Value::adopt(BQStringCreateMutableCopy(BQSTR("key"))), value = string("value");
  base.setProperty(key, value);
  BQStringAppend(key.as<BQString>(), BQSTR(" changed"));
  EXPECT_EQ(base.getProperty(string("key")), value.get());
  EXPECT_EQ(BQGetRetainCount(value), 2);
  EXPECT_EQ(base.getProperty(key), nullptr) << "the key was copied";
  base.addProperties(dictionary({{"key", string("later")}, {"other", integer(1)}}));
  EXPECT_EQ(base.getProperty(BQSTR("key")), value.get());
  EXPECT_EQ(notation(base.getProperty(BQSTR("other"))), "1");
  base.setProperty(BQSTR("key"), nullptr);
  EXPECT_EQ(base.getProperty(BQSTR("key")), nullptr);
  EXPECT_EQ(BQGetRetainCount(value), 1);
}

/* Writes the text that the info points to; null for a null one. */
const BQString* writeInfo(VXMethodInvocationRef, BQTypeRef, void* info) {
  return info == nullptr ? nullptr
                         : BQStringCreateWithCString(static_cast<const char*>(info), kBQStringEncodingUTF8);
}

VXClientContext textContext(const char* text) {
  return {0, const_cast<char*>(text), nullptr, nullptr, nullptr};
}

std::string overridden(VXSerializerBase& base, const Value& value) {
  return notation(Value::adopt(base.seriailizeOverride(value)).get());
}

TEST(SerializerBase, TheFirstOverrideOfAClassAnswersInPlaceOfTheParents) {
  VXSerializerBase parent, child;
  VXClientContext first = textContext("first"), second = textContext("second"),
                  inherited = textContext("parent");
  for (BQTypeID typeID : {BQNumberGetTypeID(), BQStringGetTypeID(), BQDateGetTypeID()}) {
    parent.addSerializationOverride(typeID, writeInfo, &inherited);
  }
  child.addSerializationOverride(BQNumberGetTypeID(), writeInfo, &first);
  child.addSerializationOverride(BQNumberGetTypeID(), writeInfo, &second);
  child.addSerializationOverride(BQStringGetTypeID(), nullptr, nullptr);
  for (bool hasParent : {false, true}) {
    child.setParentSerializer(hasParent ? &parent : nullptr);
    EXPECT_EQ(overridden(child, integer(1)), "'first'");
    EXPECT_EQ(overridden(child, real(1)), "'first'") << "every number";
    EXPECT_EQ(overridden(child, Value::retain(kBQBooleanTrue)), "-") << "a boolean is no number";
    EXPECT_EQ(overridden(child, string("x")), "-") << "no answer is an answer";
    EXPECT_EQ(overridden(child, date(0)), hasParent ? "'parent'" : "-");
  }
}

TEST(SerializerBase, TheFirstOverrideForReadingDecidesBehindTheParents) {
  VXSerializerBase parent, child;
  auto returnInfo = [](VXMethodInvocationRef, const BQTree*, const BQTree*, void* info) -> BQTypeRef {
    return BQRetain(info);
  };
  Value first = string("first"), second = string("second"), inherited = string("inherited");
  auto add = [&](VXSerializerBase& base, const char* name, const Value& value) {
    VXClientContext context = {0, value.as<void>(), nullptr, nullptr, nullptr};
    base.addDeserializationOverride(BQSTR("*"), string(name), returnInfo, &context);
  };
  add(child, "a", first);
  add(child, "*", second);
  add(parent, "b", inherited);
  auto read = [&](const char* document) {
    Value parsed = tree(document);
    const BQTree* root = BQTreeGetFirstChild(parsed);
    return notation(Value::adopt(child.deserilizeOverride(root, vx::NamespaceMap(), nullptr, parsed)).get());
  };
  EXPECT_EQ(read("<a/>") + read("<b/>"), "'first''second'");
  child.setParentSerializer(&parent);
  EXPECT_EQ(read("<a/>") + read("<b/>"), "'first''inherited'");
}

/* Registers many more overrides on the serializer that the info is. */
void registerMore(void* info) {
  for (int i = 0; i < 100; ++i) {
    static_cast<VXSerializerBase*>(info)->addSerializationOverride(BQDateGetTypeID(), writeInfo, nullptr);
  }
}

TEST(SerializerBase, OverridesMayBeRegisteredFromInsideTheCallersFunctions) {
  VXSerializerBase base;
  auto registering = [](VXMethodInvocationRef, BQTypeRef, void* info) -> const BQString* {
    registerMore(info);
    return BQSTR("written");
  };
  auto retaining = [](void* info) -> void* {
    registerMore(info);
    return info;
  };
  VXClientContext context = {0, &base, retaining, nullptr, nullptr};
  base.addSerializationOverride(BQStringGetTypeID(), registering, &context);
  EXPECT_EQ(overridden(base, string("x")), "'written'");
  EXPECT_EQ(overridden(base, string("x")), "'written'");
}

}  // namespace
