#include "xml/Entities.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;
using namespace std::string_literals;

const std::pair<char, std::string> kEntities[] = {
    {'\'', "apos"}, {'"', "quot"}, {'<', "lt"}, {'>', "gt"}, {'&', "amp"}};

/* One character after the other. */
std::string encodedPlainly(const std::string& plain) {
  std::string result;
  for (char character : plain) {
    std::string piece(1, character);
    for (const auto& [special, name] : kEntities) {
      if (special == character) piece = "&" + name + ";";
    }
    result += piece;
  }
  return result;
}

std::string encoded(const std::string& plain) {
  return text(Value::adopt(vx::entityEncodeString(string(plain))).get());
}

TEST(Entities, FiveCharactersAreReplacedWhereverTheyStand) {
  EXPECT_EQ(encoded("'\"<>&"), "&apos;&quot;&lt;&gt;&amp;");
  EXPECT_EQ(encoded("&amp;"), "&amp;amp;");
  EXPECT_EQ(encoded("plain \u00e9\u65e5 \t\r\n\x01\0/"s), "plain \u00e9\u65e5 \t\r\n\x01\0/"s);
  for (int code = 1; code < 128; ++code) {
    for (size_t position = 0; position < 17; ++position) {
      std::string plain(17, 'x');
      plain[position] = static_cast<char>(code);
      ASSERT_EQ(encoded(plain), encodedPlainly(plain)) << code << " at " << position;
    }
  }
  for (size_t size : {0, 511, 512, 513, 5000}) { /* the room for a long text is measured */
    EXPECT_EQ(encoded(std::string(size, '"')), encodedPlainly(std::string(size, '"'))) << size;
  }
}

TEST(Entities, NamesAndReferencesLeadBackToCharacters) {
  for (const auto& [character, name] : kEntities) {
    EXPECT_EQ(text(vx::decodeEntityReference(string(name))), std::string(1, character));
    EXPECT_EQ(text(vx::decodeUnparsedEntityReference(string("&" + name + ";"))), std::string(1, character));
  }
  for (const char* unknown : {"LT", "#60", "&lt;", "", "&LT;", "&lt"}) {
    EXPECT_EQ(text(vx::decodeEntityReference(string(unknown))), "<<Unknown Escape>>") << unknown;
  }
  EXPECT_EQ(text(vx::decodeUnparsedEntityReference(BQSTR("lt"))), "<<Unknown Escape>>");
  EXPECT_EQ(text(vx::decodeUnparsedEntityReference(nullptr)), "<<Unknown Escape>>");
}

TEST(Entities, ReplacingAllIgnoresCaseAndCounts) {
  Value changed = Value::adopt(BQStringCreateMutableCopy(BQSTR("aXbxAxa")));
  EXPECT_EQ(vx::findReplaceAll(changed.as<BQString>(), BQSTR("x"), BQSTR("xx")), 3);
  EXPECT_EQ(text(changed.get()), "axxbxxAxxa");
}

}  // namespace
