#include "platform/object/Description.h"

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
#include "platform/object/Object.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

/* Data longer than this shows only its beginning. */
constexpr BQIndex kMaximumBytesShown = 64;

using InstanceDescriber = const BQString* (*)(BQTypeRef);

/*
 * An object whose inside is being described, from here to the end of the scope, by a function of its
 * class or without one. Descriptions within descriptions, by way of such functions, count as well.
 */
class OpenObject {
 public:
  explicit OpenObject(BQTypeRef object, InstanceDescriber describer = nullptr)
      : object_(object),
        describer_(describer),
        outer_(innermost_),
        depth_(outer_ == nullptr ? 1 : outer_->depth_ + 1) {
    innermost_ = this;
  }
  ~OpenObject() { innermost_ = outer_; }
  OpenObject(const OpenObject&) = delete;
  OpenObject& operator=(const OpenObject&) = delete;

  /* Whether to leave the inside out: the object is inside itself, or too deep. */
  bool mustBeCut() const {
    if (depth_ > kMaximumDepth) return true;
    const OpenObject* open = outer_;
    while (open != nullptr && !(open->object_ == object_ && open->describer_ == describer_))
      open = open->outer_;
    return open != nullptr;
  }

 private:
  static inline thread_local const OpenObject* innermost_ = nullptr;

  BQTypeRef object_;
  InstanceDescriber describer_;
  const OpenObject* outer_;
  int depth_;
};

/* Appends descriptions to one text, so that nesting does not copy what is inside. */
class Describer {
 public:
  explicit Describer(MutableString* out) : out_(out) {}

  void describe(BQTypeRef object) {
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
        return addInstance(object, describerOf(classOf(typeIDOf(object))));
    }
  }

  static InstanceDescriber describerOf(const BQRuntimeClass* runtimeClass) {
    return runtimeClass->copyDebugDesc != nullptr ? runtimeClass->copyDebugDesc
                                                  : runtimeClass->copyFormattingDesc;
  }

  /* The text that a class' function gives, or the class and the address. */
  void addInstance(BQTypeRef object, InstanceDescriber describer) {
    OpenObject open(object, describer);
    if (open.mustBeCut()) return add("...");
    Ref<const BQString> text;
    if (describer != nullptr) text = Ref<const BQString>::adopt(describer(object));
    if (text) return BQStringAppend(out_, text.get());
    BQStringAppendFormat(out_, BQSTR("<%s %p>"), classOf(typeIDOf(object))->className, object);
  }

 private:
  void add(std::string_view text) { appendText(out_, text); }

  void addQuoted(const BQString* string) {
    std::string_view text = viewOf(string);
    add("\"");
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
      const char* escape = escapeOf(text[i]);
      if (escape == nullptr) continue;
      appendForDisplay(out_, text.substr(start, i - start), false);
      add(escape);
      start = i + 1;
    }
    appendForDisplay(out_, text.substr(start), false);
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
    OpenObject open(array);
    if (open.mustBeCut()) return add("...");
    add("[");
    for (BQIndex i = 0; i < BQArrayGetCount(array); ++i) {
      if (i > 0) add(", ");
      describe(BQArrayGetValueAtIndex(array, i));
    }
    add("]");
  }

  void addDictionary(const BQDictionary* dictionary) {
    OpenObject open(dictionary);
    if (open.mustBeCut()) return add("...");
    auto count = static_cast<size_t>(BQDictionaryGetCount(dictionary));
    std::vector<BQTypeRef> keys(count), values(count);
    BQDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
    add("{");
    for (size_t i = 0; i < count; ++i) {
      if (i > 0) add(", ");
      describe(keys[i]);
      add(": ");
      describe(values[i]);
    }
    add("}");
  }

  MutableString* out_;
};

}  // namespace

void appendFormattingDescription(MutableString* out, BQTypeRef object) {
  if (isString(object)) return BQStringAppend(out, static_cast<const BQString*>(object));
  if (isInstance(object, kArrayTypeID) || isInstance(object, kDictionaryTypeID)) {
    auto text = Ref<const BQString>::adopt(BQCopyDescription(object)); /* `out` may be in the container */
    return BQStringAppend(out, text.get());
  }
  const BQRuntimeClass* runtimeClass = object == nullptr ? nullptr : classOf(typeIDOf(object));
  if (runtimeClass != nullptr && runtimeClass->copyFormattingDesc != nullptr) {
    Describer(out).addInstance(object, runtimeClass->copyFormattingDesc);
  } else {
    Describer(out).describe(object);
  }
}

}  // namespace bq

const BQString* BQCopyDescription(BQTypeRef object) {
  if (bq::isInstance(object, bq::kStringTypeID))
    return BQStringCreateCopy(static_cast<const BQString*>(object));
  BQString* text = BQStringCreateMutable(0);
  bq::Describer(bq::asMutableString(text)).describe(object);
  return bq::freeze(text);
}

void BQShow(BQTypeRef object) {
  auto text = bq::Ref<const BQString>::adopt(BQCopyDescription(object));
  auto shown = bq::Ref<const BQString>::adopt(BQStringCreateForDisplay(text.get(), true));
  std::fprintf(stderr, "%s\n", BQStringGetUTF8Ptr(shown.get()));
}
