#include "xml/Entities.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;
using namespace std::string_literals;

/* One character after the other. */
std::string encodedPlainly(const std::string& text) {
  std::string result;
  for (char c : text) {
    result += c == '&'    ? "&amp;"s
              : c == '<'  ? "&lt;"s
              : c == '>'  ? "&gt;"s
              : c == '"'  ? "&quot;"s
              : c == '\'' ? "&apos;"s
                          : std::string(1, c);
  }
  return result;
}

std::string encoded(const std::string& plain) {
  Value result = Value::adopt(vx::entityEncodeString(string(plain)));
  BQStringAppend(result.as<BQString>(), BQSTR("."));
  std::string changed = text(result.get());
  EXPECT_EQ(changed.back(), '.') << "the result is mutable";
  return changed.substr(0, changed.size() - 1);
}

TEST(Entities, FiveCharactersAreReplaced) {
  EXPECT_EQ(encoded("'\"<>&"), "&apos;&quot;&lt;&gt;&amp;");
  EXPECT_EQ(encoded("&amp;"), "&amp;amp;");
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("plain \u00e9\u65e5 \t\r\n\x01\0/"s), "plain \u00e9\u65e5 \t\r\n\x01\0/"s);
}

TEST(Entities, EveryCharacterIsTreatedAlikeAtEveryPosition) {
  for (int code = 1; code < 128; ++code) {
    for (size_t position = 0; position < 17; ++position) {
      std::string plain(17, 'x');
      plain[position] = static_cast<char>(code);
      ASSERT_EQ(encoded(plain), encodedPlainly(plain)) << code << " at " << position;
    }
  }
  for (size_t size : {511u, 512u, 513u, 5000u}) {
    std::string worst(size, '"');
    EXPECT_EQ(encoded(worst), encodedPlainly(worst)) << "a text whose room is measured or not: " << size;
  }
}

TEST(Entities, NamesAndReferencesLeadBackToCharacters) {
  const std::pair<const char*, const char*> known[] = {
      {"apos", "'"}, {"quot", "\""}, {"lt", "<"}, {"gt", ">"}, {"amp", "&"}};
  for (auto [name, character] : known) {
    std::string reference = "&"s + name + ";";
    EXPECT_EQ(text(vx::decodeEntityReference(string(name))), character);
    EXPECT_EQ(text(vx::decodeUnparsedEntityReference(string(reference))), character);
    EXPECT_EQ(text(BQDictionaryGetValue(vx::getEntityToCharacterStringDict(), string(name))), character);
    EXPECT_EQ(text(BQDictionaryGetValue(vx::getTrueEntityToCharactersStringDict(), string(reference))), character);
  }
  for (const char* unknown : {"LT", "#60", "#x3C", "nbsp", "", "&lt;"}) {
    EXPECT_EQ(text(vx::decodeEntityReference(string(unknown))), "<<Unknown Escape>>") << unknown;
  }
  for (const char* unknown : {"&LT;", "lt", "&lt", "&#60;"}) {
    EXPECT_EQ(text(vx::decodeUnparsedEntityReference(string(unknown))), "<<Unknown Escape>>") << unknown;
  }
  EXPECT_EQ(text(vx::decodeEntityReference(nullptr)), "<<Unknown Escape>>");
  EXPECT_EQ(text(vx::decodeUnparsedEntityReference(nullptr)), "<<Unknown Escape>>");
}

TEST(Entities, ReplacingAllIgnoresCaseAndCounts) {
  Value changed = Value::adopt(BQStringCreateMutableCopy(BQSTR("aXbxAxa")));
  EXPECT_EQ(vx::findReplaceAll(changed.as<BQString>(), BQSTR("x"), BQSTR("xx")), 3);
  EXPECT_EQ(text(changed.get()), "axxbxxAxxa");
  EXPECT_EQ(vx::findReplaceAll(changed.as<BQString>(), BQSTR("none"), BQSTR("")), 0);
}

}  // namespace
