/* What the header of a reply says about its document, and how that is parsed. */
#include "xml/Parsing.h"

#include <gtest/gtest.h>

#include "platform/text/EncodingTable.h"
#include "support/Values.h"
#include "xml/ContentType.h"
#include "xml/TreeAccess.h"

namespace {

using namespace support;
using namespace std::string_literals;

TEST(ContentType, NamesTheEncodingAndTellsXMLAndText) {
  const std::tuple<const char*, unsigned long, bool, bool> rows[] = {
      {nullptr, kBQStringEncodingUTF8, false, true},
      {"text/xml", kBQStringEncodingUTF8, true, true},
      {"TEXT/XML; charset=;", kBQStringEncodingUTF8, true, false},
      {"application/vnd/XML+zip; charset=\"\"", kBQStringEncodingUTF8, true, false},
      {"application/soap+xml; charset='", kBQStringEncodingUTF8, false, false},
      {"text/html; charset=\"ISO-8859-1\"", kBQStringEncodingISOLatin1, false, true},
      {"image/png;CHARSET='iso-8859-1'; x=y", kBQStringEncodingISOLatin1, false, false},
      {"text/xml; charset=utf-16be;", kBQStringEncodingUTF16BE, true, true},
      {"text/xml; charset= ISO-8859-1", kBQStringEncodingASCII, true,
       true} /* an unknown name: it has a blank */
  };
  for (const auto& [contentType, encoding, isXML, isText] : rows) {
    Value response = Value::adopt(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK")));
    Value value = contentType == nullptr ? Value() : string(contentType);
    BQHTTPMessageSetHeaderFieldValue(response.as<BQHTTPMessage>(), BQSTR("content-type"), value);
    unsigned char xml = 2, text = 2;
    vx::checkForXMLContent(response, &xml, &text);
    EXPECT_EQ(std::tuple(vx::getResponseCharset(response), xml, text), std::tuple(encoding, isXML, isText))
        << contentType;
  }
}

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

TEST(Parsing, ReadsADocumentInTheEncodingOfTheHeader) {
  const std::string none = "No valid XML data in response", accented = "a '\u00e9'";
  const std::tuple<std::string, unsigned long, std::string, bool> rows[] = {
      {"<a>\u00e9</a>", kBQStringEncodingUTF8, accented, false},
      {"<a>\xe9</a>", kBQStringEncodingISOLatin1, accented, false},
      {"\0<\0a\0/\0>"s, kBQStringEncodingUTF16BE, "a -", false},
      {"\xef\xbb\xbf<a>\u00e9</a>", kBQStringEncodingASCII, accented, false}, /* a mark says UTF-8 */
      {"<a/>", 0x7777, none, false}, /* a declaration cannot be written */
      {"<?xml version='1.0'?><a>\u00e9</a>", kBQStringEncodingASCII, accented, true},
      {"\0\xff<? <<?XML version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>"s, 0x7777, accented, true},
  };
  for (const auto& [document, encoding, outcome, isDeclared] : rows) {
    EXPECT_EQ(parse(blob(document), true, encoding), outcome) << document;
    EXPECT_EQ(parse(blob(document), false, encoding), isDeclared ? outcome : none) << document;
  }
  for (const char* document : {"", "text", "<?xm l?><a/>", "<a><?xm"})
    EXPECT_EQ(parse(blob(document), false, kBQStringEncodingUTF8), none) << document;
  for (const bq::EncodingRecord& encoding : bq::allEncodings()) {
    for (const std::string& declaration :
         {""s, "<?xml version='1.0' encoding='"s + encoding.name.bytes + "'?>"}) {
      Value document = Value::adopt(
          BQStringCreateExternalRepresentation(string(declaration + "<a>b</a>"), encoding.number, 0));
      EXPECT_EQ(parse(document, true, encoding.number), "a 'b'") << encoding.name.bytes << declaration;
    }
  }
}

}  // namespace
