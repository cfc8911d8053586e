#include "xml/Parsing.h"

#include <gtest/gtest.h>

#include "platform/text/EncodingTable.h"
#include "support/Values.h"
#include "xml/TreeAccess.h"

namespace {

using namespace support;
using namespace std::string_literals;

/* The name of the first element and its text, or else the message. */
std::string parse(const Value& document, bool allowMissingDeclaration, unsigned long encoding) {
  const BQString* message = BQSTR("left from before");
  Value parsed = Value::adopt(vx::parseXML(document, allowMissingDeclaration, encoding, &message));
  Value owned = Value::adopt(message);
  if (parsed.get() == nullptr) return text(message);
  EXPECT_EQ(message, nullptr);
  const BQTree* root = BQTreeGetFirstChild(parsed);
  Value content = Value::adopt(vx::copyXMLStringFromTree(BQTreeGetFirstChild(root)));
  return text(vx::getElementName(root)) + " " + notation(content.get());
}

TEST(Parsing, ReadsADocumentWithoutDeclarationInTheEncodingGivenOrNotAtAll) {
  const std::string none = "No valid XML data in response";
  const struct {
    std::string document;
    unsigned long encoding;
    std::string outcome, outcomeIfADeclarationIsNeeded;
  } rows[] = {
      {"<a>\u00e9</a>", kBQStringEncodingUTF8, "a '\u00e9'", none},
      {"<a>\xe9</a>", kBQStringEncodingISOLatin1, "a '\u00e9'", none},
      {"\0<\0a\0/\0>"s, kBQStringEncodingUTF16BE, "a -", none},
      {"\xef\xbb\xbf<a>\u00e9</a>", kBQStringEncodingASCII, "a '\u00e9'", none}, /* a mark says UTF-8 */
      {"<a/>", 0x7777, none, none}, /* a declaration cannot be written */
      {"<?xml version='1.0'?><a>\u00e9</a>", kBQStringEncodingASCII, "a '\u00e9'", "a '\u00e9'"},
      {"\0\xff<? <<?XML version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>"s, 0x7777, "a '\u00e9'",
       "a '\u00e9'"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(parse(blob(row.document), true, row.encoding), row.outcome) << row.document;
    EXPECT_EQ(parse(blob(row.document), false, row.encoding), row.outcomeIfADeclarationIsNeeded)
        << row.document;
  }
  for (const char* document : {"", "text", "<?xm l?><a/>", "<a><?xm"})
    EXPECT_EQ(parse(blob(document), false, kBQStringEncodingUTF8), none) << document;
}

TEST(Parsing, ReadsADocumentInEveryEncodingThatTheHeaderNames) {
  auto encoded = [](const std::string& text, BQStringEncoding encoding) {
    return Value::adopt(BQStringCreateExternalRepresentation(string(text), encoding, 0));
  };
  for (const bq::EncodingRecord& encoding : bq::allEncodings()) {
    const std::string own = "<?xml version='1.0' encoding='"s + encoding.name.bytes + "'?>";
    for (const std::string& declaration : {""s, own}) {
      EXPECT_EQ(parse(encoded(declaration + "<a>text</a>", encoding.number), true, encoding.number),
                "a 'text'")
          << encoding.name.bytes << declaration;
    }
  }
}

}  // namespace
