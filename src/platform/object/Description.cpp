#include <cstdio>

#include <charconv>
#include <string_view>
#include <vector>

#include <BQ/BQArray.h>
#include <BQ/BQBoolean.h>
#include <BQ/BQData.h>
#include <BQ/BQDate.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQNumber.h>
#include <BQ/BQString.h>

#include "platform/object/Classes.h"
#include "platform/object/DepthGuard.h"
#include "platform/object/Object.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

/* Data longer than this shows only its beginning. */
constexpr BQIndex kMaximumBytesShown = 64;

/* Appends descriptions to one text, so that nesting does not copy what is inside. */
class Describer {
 public:
  explicit Describer(BQString* out) : out_(out) {}

  /* What stands alone: a string shows as it is. */
  void describe(BQTypeRef object) {
    if (isInstance(object, kStringTypeID)) {
      BQStringAppend(out_, static_cast<const BQString*>(object));
    } else {
      describeNested(object);
    }
  }

 private:
  void describeNested(BQTypeRef object) {
    if (object == nullptr) return add("(null)");
    switch (baseOf(object)->typeID) {
      case kStringTypeID:
        return addQuoted(static_cast<const BQString*>(object));
      case kNullTypeID:
        return add("null");
      case kBooleanTypeID:
        return add(object == kBQBooleanTrue ? "true" : "false");
      case kNumberTypeID:
        return addNumber(static_cast<const BQNumber*>(object));
      case kDateTypeID:
        return addDate(static_cast<const BQDate*>(object));
      case kDataTypeID:
        return addData(static_cast<const BQData*>(object));
      case kArrayTypeID:
        return addArray(static_cast<const BQArray*>(object));
      case kDictionaryTypeID:
        return addDictionary(static_cast<const BQDictionary*>(object));
      default:
        return addInstance(object);
    }
  }

  void add(std::string_view text) {
    BQStringAppendUTF8(out_, text.data(), static_cast<BQIndex>(text.size()));
  }

  void addQuoted(const BQString* string) {
    std::string_view text(BQStringGetUTF8Ptr(string), static_cast<size_t>(BQStringGetLength(string)));
    add("\"");
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
      const char* escape = escapeOf(text[i]);
      if (escape == nullptr) continue;
      add(text.substr(start, i - start));
      add(escape);
      start = i + 1;
    }
    add(text.substr(start));
    add("\"");
  }

  static const char* escapeOf(char character) {
    switch (character) {
      case '"':
        return "\\\"";
      case '\\':
        return "\\\\";
      case '\n':
        return "\\n";
      case '\r':
        return "\\r";
      case '\t':
        return "\\t";
      default:
        return nullptr;
    }
  }

  void addNumber(const BQNumber* number) {
    char text[64];
    std::to_chars_result end{};
    if (BQNumberIsFloatType(number)) {
      double value = 0;
      BQNumberGetValue(number, kBQNumberFloat64Type, &value);
      bool single =
          BQNumberGetType(number) == kBQNumberFloatType || BQNumberGetType(number) == kBQNumberFloat32Type;
      end = single ? std::to_chars(text, text + sizeof text, static_cast<float>(value))
                   : std::to_chars(text, text + sizeof text, value);
    } else {
      int64_t value = 0;
      BQNumberGetValue(number, kBQNumberSInt64Type, &value);
      end = std::to_chars(text, text + sizeof text, value);
    }
    add(std::string_view(text, static_cast<size_t>(end.ptr - text)));
  }

  void addDate(const BQDate* date) {
    BQGregorianDate fields = BQAbsoluteTimeGetGregorianDate(BQDateGetAbsoluteTime(date));
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", fields.year, fields.month, fields.day,
                  fields.hour, fields.minute, static_cast<int>(fields.second));
    add(text);
  }

  void addData(const BQData* data) {
    static constexpr char kDigits[] = "0123456789abcdef";
    const uint8_t* bytes = BQDataGetBytePtr(data);
    BQIndex length = BQDataGetLength(data);
    BQStringAppendFormat(out_, BQSTR("<%ld bytes"), static_cast<long>(length));
    for (BQIndex i = 0; i < length && i < kMaximumBytesShown; ++i) {
      if (i % 4 == 0) add(" ");
      char digits[] = {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]};
      add(std::string_view(digits, 2));
    }
    add(length > kMaximumBytesShown ? " ...>" : ">");
  }

  void addArray(const BQArray* array) {
    DepthGuard guard;
    if (guard.tooDeep()) return add("...");
    add("[");
    for (BQIndex i = 0; i < BQArrayGetCount(array); ++i) {
      if (i > 0) add(", ");
      describeNested(BQArrayGetValueAtIndex(array, i));
    }
    add("]");
  }

  void addDictionary(const BQDictionary* dictionary) {
    DepthGuard guard;
    if (guard.tooDeep()) return add("...");
    auto count = static_cast<size_t>(BQDictionaryGetCount(dictionary));
    std::vector<BQTypeRef> keys(count), values(count);
    BQDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    add("{");
    for (size_t i = 0; i < count; ++i) {
      if (i > 0) add(", ");
      describeNested(keys[i]);
      add(": ");
      describeNested(values[i]);
    }
    add("}");
  }

  void addInstance(BQTypeRef object) {
    const BQRuntimeClass* runtimeClass = classOf(baseOf(object)->typeID);
    auto describeInstance = runtimeClass->copyFormattingDesc != nullptr ? runtimeClass->copyFormattingDesc
                                                                        : runtimeClass->copyDebugDesc;
    Ref<const BQString> text;
    if (describeInstance != nullptr) text = Ref<const BQString>::adopt(describeInstance(object));
    if (text) return BQStringAppend(out_, text.get());
    BQStringAppendFormat(out_, BQSTR("<%s %p>"), runtimeClass->className, object);
  }

  BQString* out_;
};

}  // namespace
}  // namespace bq

const BQString* BQCopyDescription(BQTypeRef object) {
  if (bq::isInstance(object, bq::kStringTypeID))
    return BQStringCreateCopy(static_cast<const BQString*>(object));
  BQString* text = BQStringCreateMutable(0);
  bq::Describer(text).describe(object);
  return bq::freeze(text);
}

void BQShow(BQTypeRef object) {
  auto text = bq::Ref<const BQString>::adopt(BQCopyDescription(object));
  std::fprintf(stderr, "%s\n", BQStringGetUTF8Ptr(text.get()));
}
