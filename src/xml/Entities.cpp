#include "xml/Entities.h"

#include <cstdint>
#include <cstring>

#include <array>

#include <BQ/BQDictionary.h>
#include <BQ/BQString.h>

#include "diag/Log.h"
#include "diag/Switches.h"
#include "values/Construction.h"
#include "xml/Text.h"

namespace vx {
namespace {

const BQDictionary* entityNames() {
  return bqTypeCreateDictionary(nullptr, BQSTR("apos"), BQSTR("'"), BQSTR("quot"), BQSTR("\""), BQSTR("lt"),
                                BQSTR("<"), BQSTR("gt"), BQSTR(">"), BQSTR("amp"), BQSTR("&"), nullptr);
}

const BQDictionary* entityReferences() {
  return bqTypeCreateDictionary(nullptr, BQSTR("&apos;"), BQSTR("'"), BQSTR("&quot;"), BQSTR("\""),
                                BQSTR("&lt;"), BQSTR("<"), BQSTR("&gt;"), BQSTR(">"), BQSTR("&amp;"),
                                BQSTR("&"), nullptr);
}

const BQString* lookUp(const BQDictionary* table, const BQString* entity) {
  const BQString* unknown = BQSTR("<<Unknown Escape>>");
  if (entity == nullptr) return unknown;
  if (auto* character = static_cast<const BQString*>(BQDictionaryGetValue(table, entity))) return character;
  if (gVXDebugVerbose != 0) _vxLogf("unknown escape entity reference: %@", entity);
  return unknown;
}

/* The longest reference is six characters. */
constexpr size_t kLongestReference = 6;
/* A text up to this size is given the room of its worst case; a longer one is measured. */
constexpr size_t kMeasuredSize = 512;

/* The reference of each character that has one; empty for the others. */
constexpr std::array<std::string_view, 128> kReferences = [] {
  std::array<std::string_view, 128> table{};
  table['\''] = "&apos;";
  table['"'] = "&quot;";
  table['<'] = "&lt;";
  table['>'] = "&gt;";
  table['&'] = "&amp;";
  return table;
}();

std::string_view referenceOf(char character) {
  auto code = static_cast<unsigned char>(character);
  return code < kReferences.size() ? kReferences[code] : std::string_view();
}

/* The high bit of every byte of `word` that is zero, and perhaps of the byte above such a one. */
uint64_t zeroBytes(uint64_t word) {
  return (word - 0x0101010101010101u) & ~word & 0x8080808080808080u;
}

uint64_t bytesEqualTo(uint64_t word, char character) {
  return zeroBytes(word ^ (0x0101010101010101u * static_cast<unsigned char>(character)));
}

/* Whether any of eight characters may have a reference; looks at them all at once. */
bool mayNeedReference(const char* eight) {
  uint64_t word;
  std::memcpy(&word, eight, sizeof word);
  /* " & ' are 0x22, 0x26, 0x27; < > are 0x3C, 0x3E. */
  return (bytesEqualTo(word, '"') | bytesEqualTo(word & 0xFEFEFEFEFEFEFEFEu, '&') |
          bytesEqualTo(word & 0xFDFDFDFDFDFDFDFDu, '<')) != 0;
}

}  // namespace

const BQDictionary* getEntityToCharacterStringDict() {
  static const BQDictionary* const sEntityDict = entityNames();
  return sEntityDict;
}

const BQDictionary* getTrueEntityToCharactersStringDict() {
  static const BQDictionary* const sEntityDict = entityReferences();
  return sEntityDict;
}

BQString* entityEncodeString(const BQString* text) {
  std::string_view content = textOf(text);
  size_t room = entityEncodedRoom(content);
  BQString* encoded = BQStringCreateMutable(static_cast<BQIndex>(room));
  char* start = BQStringReserveUTF8(encoded, static_cast<BQIndex>(room));
  BQStringCommitUTF8(encoded, entityEncode(content, start) - start);
  return encoded;
}

BQIndex findReplaceAll(BQString* text, const BQString* find, const BQString* replacement) {
  BQRange whole = BQRangeMake(0, BQStringGetLength(text));
  return BQStringFindAndReplace(text, find, replacement, whole, kBQCompareCaseInsensitive);
}

const BQString* decodeEntityReference(const BQString* name) {
  return lookUp(getEntityToCharacterStringDict(), name);
}

const BQString* decodeUnparsedEntityReference(const BQString* reference) {
  return lookUp(getTrueEntityToCharactersStringDict(), reference);
}

size_t entityEncodedRoom(std::string_view text) {
  if (text.size() <= kMeasuredSize) return text.size() * kLongestReference;
  size_t room = text.size();
  for (char character : text) {
    if (!referenceOf(character).empty()) room += kLongestReference - 1;
  }
  return room;
}

char* entityEncode(std::string_view text, char* out) {
  const char* next = text.data();
  const char* end = next + text.size();
  while (next < end) {
    if (end - next >= 8 && !mayNeedReference(next)) {
      std::memcpy(out, next, 8);
      out += 8;
      next += 8;
      continue;
    }
    const char* stop = end - next >= 8 ? next + 8 : end;
    for (; next < stop; ++next) {
      std::string_view reference = referenceOf(*next);
      if (reference.empty()) {
        *out++ = *next;
      } else {
        std::memcpy(out, reference.data(), reference.size());
        out += reference.size();
      }
    }
  }
  return out;
}

}  // namespace vx
