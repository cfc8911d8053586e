#include "Payload.h"

namespace bench {
namespace {

constexpr int kStructCount = 2000;
constexpr int kIntegerCount = 100000;
constexpr BQIndex kDataLength = BQIndex{2} << 20;
constexpr int kBytesInStruct = 20;

/* 2026-01-01T00:00:00Z, in seconds since 2001. */
constexpr BQAbsoluteTime kFirstDate = 788918400;
constexpr BQTimeInterval kHour = 3600;

BQRef<const BQNumber> makeInteger(int32_t value) {
  return BQAdopt(BQNumberCreate(kBQNumberSInt32Type, &value));
}

BQRef<const BQNumber> makeDouble(double value) {
  return BQAdopt(BQNumberCreate(kBQNumberDoubleType, &value));
}

/* Bytes without a pattern, the same in every run. */
BQRef<const BQData> makeData(BQIndex length, uint32_t seed) {
  auto data = BQAdopt(BQDataCreateMutable(length));
  BQDataSetLength(data.get(), length);
  uint8_t* bytes = BQDataGetMutableBytePtr(data.get());
  for (BQIndex index = 0; index < length; ++index) {
    seed = seed * 1664525 + 1013904223;
    bytes[index] = static_cast<uint8_t>(seed >> 24);
  }
  return data;
}

BQRef<const BQArray> makeIntegers(int count, int step) {
  auto array = BQAdopt(BQArrayCreateMutable(count));
  for (int index = 0; index < count; ++index) {
    BQArrayAppendOwnedValue(array.get(), makeInteger(index * step).release());
  }
  return array;
}

void setMember(BQDictionary* record, const BQString* name, const BQRef<const void>& value) {
  BQDictionarySetValue(record, name, value.get());
}

BQRef<const BQDictionary> makeStruct(int index) {
  auto record = BQAdopt(BQDictionaryCreateMutable(7, kBQDictionaryRetainKeys));
  setMember(record.get(), BQSTR("identifier"), makeInteger(index * 7919));
  setMember(record.get(), BQSTR("price"), makeDouble(index * 1.25 + 0.1));
  BQDictionarySetValue(record.get(), BQSTR("active"), index % 2 != 0 ? kBQBooleanTrue : kBQBooleanFalse);
  setMember(record.get(), BQSTR("title"),
            BQAdopt(BQStringCreateWithFormat(BQSTR("Entry <%d> & \"caf\xC3\xA9\" \xE2\x82\xAC \xE6\x97\xA5"),
                                             index)));
  setMember(record.get(), BQSTR("changed"), BQAdopt(BQDateCreate(kFirstDate + index * kHour)));
  setMember(record.get(), BQSTR("digest"), makeData(kBytesInStruct, static_cast<uint32_t>(index)));
  setMember(record.get(), BQSTR("sizes"), makeIntegers(3, index + 1));
  return record;
}

BQRef<const BQArray> makeStructs() {
  auto array = BQAdopt(BQArrayCreateMutable(kStructCount));
  for (int index = 0; index < kStructCount; ++index) {
    BQArrayAppendOwnedValue(array.get(), makeStruct(index).release());
  }
  return array;
}

}  // namespace

const std::vector<Payload>& payloads() {
  static const std::vector<Payload> all = {
      {"structs", [] { return makeStructs(); }},
      {"ints", [] { return makeIntegers(kIntegerCount, 31); }},
      {"data", [] { return makeData(kDataLength, 1); }},
      structPayload(),
  };
  return all;
}

const Payload& integerPayload() {
  static const Payload payload = {"int", [] { return makeInteger(42); }};
  return payload;
}

const Payload& structPayload() {
  static const Payload payload = {"struct", [] { return makeStruct(1); }};
  return payload;
}

}  // namespace bench
