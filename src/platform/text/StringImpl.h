/* The memory layout of strings, for the rooms that make strings themselves. */
#ifndef BQ_TEXT_STRING_IMPL_H
#define BQ_TEXT_STRING_IMPL_H

#include <BQ/BQString.h>

#include <cstring>
#include <string_view>

#include "platform/object/Arena.h"
#include "platform/object/Object.h"

/*
 * The layout of BQConstantString. `bytes` are well-formed UTF-8: right behind the object or in memory
 * of their own, with a NUL behind them, or in the memory of somebody else, without.
 */
struct BQString {
  BQRuntimeBase base;
  uint64_t length;
  char* bytes;
};

namespace bq {

/* Class flags of strings. */
inline constexpr uint16_t kStringMutable = kClassFlag;
inline constexpr uint16_t kStringOwnsBytes = kClassFlag << 1;
inline constexpr uint16_t kStringBorrowsBytes = kClassFlag << 2;

struct MutableString : BQString {
  uint64_t capacity; /* without the NUL */
};

inline std::string_view viewOf(const BQString* string) {
  return {string->bytes, string->length};
}

inline bool isString(BQTypeRef object) {
  return isInstance(object, kStringTypeID);
}

/* A new immutable string of bytes that are known to be well-formed, owned by the caller. */
const BQString* makeString(std::string_view text);

/* Makes a mutable string immutable in place. */
const BQString* freeze(BQString* string);

/* A string in an arena, of bytes that are known to be well-formed. */
inline const BQString* makeArenaString(Arena& arena, const char* text, size_t length) {
  void* memory = arena.allocate(sizeof(BQString) + length + 1);
  char* bytes = static_cast<char*>(memory) + sizeof(BQString);
  std::memcpy(bytes, text, length);
  bytes[length] = '\0';
  return new (memory) BQString{{kStringTypeID, kInArena, 1}, length, bytes};
}

/* Whether a position is not inside a character. */
inline bool isCharacterBoundary(std::string_view text, size_t position) {
  return position >= text.size() || (static_cast<unsigned char>(text[position]) & 0xC0) != 0x80;
}

/* Whether a range lies within the text and cuts no character. */
inline bool isValidRange(std::string_view text, BQRange range) {
  if (range.location < 0 || range.length < 0) return false;
  auto start = static_cast<size_t>(range.location), length = static_cast<size_t>(range.length);
  return start <= text.size() && length <= text.size() - start && isCharacterBoundary(text, start) &&
         isCharacterBoundary(text, start + length);
}

inline char foldCase(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

inline bool equalIgnoringCase(std::string_view first, std::string_view second) {
  if (first.size() != second.size()) return false;
  for (size_t i = 0; i < first.size(); ++i) {
    if (first[i] != second[i] && foldCase(first[i]) != foldCase(second[i])) return false;
  }
  return true;
}

/* Appends text that is known to be well-formed. */
void appendText(MutableString* string, std::string_view text);

/* Appends well-formed text as BQStringCreateForDisplay gives it. */
void appendForDisplay(MutableString* string, std::string_view text, bool keepsLines);

/* The mutable string behind a pointer; null for anything else. */
inline MutableString* asMutableString(BQString* string) {
  bool isMutable = isString(string) && (string->base.flags & kStringMutable) != 0;
  return isMutable ? static_cast<MutableString*>(string) : nullptr;
}

}  // namespace bq

#endif
