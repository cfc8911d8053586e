#include "xml/Parsing.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/text/EncodingTable.h"
#include "support/Values.h"
#include "xml/TreeAccess.h"

namespace {

using namespace support;
using namespace std::string_literals;

struct Outcome {
  std::string name;    /* of the first element; its text behind a blank */
  std::string message; /* or else this */
  std::string written; /* to the standard error stream */
};

Outcome parse(const Value& document, bool allowMissingDeclaration,
              unsigned long encoding = kBQStringEncodingUTF8) {
  const BQString* message = BQSTR("left from before");
  testing::internal::CaptureStderr();
  Value parsed = Value::adopt(vx::parseXML(document, allowMissingDeclaration, encoding, &message));
  Outcome outcome{"", message == nullptr ? "" : text(Value::adopt(message).get()),
                  testing::internal::GetCapturedStderr()};
  EXPECT_NE(parsed.get() == nullptr, message == nullptr);
  const BQTree* root = BQTreeGetFirstChild(parsed);
  if (root != nullptr) outcome.name = text(vx::getElementName(root));
  Value content = Value::adopt(vx::copyXMLStringFromTree(BQTreeGetFirstChild(root)));
  if (content.get() != nullptr) outcome.name += " " + text(content.get());
  return outcome;
}

TEST(Parsing, FindsTheDeclarationAndReadsInItsEncoding) {
  const struct {
    std::string document;
    std::string name;
    const char* why;
  } rows[] = {
      {"<?xml version='1.0'?><a>\u00e9</a>", "a \u00e9", "a declaration at the start"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xe9</a>", "a \u00e9", "the encoding that it names"},
      {"junk <b/> <? <<?XML VERSION=\"1.0\"?><a/>", "a", "junk, and capitals"},
      {"\r\n<?xMl version='1.0'?>\n<a/>", "a", "an empty line in front"},
      {"\xef\xbb\xbf<?xml version='1.0'?><a/>", "a", "a byte-order mark in front"},
      {"\0\xff<?xml version='1.0'?><a/>"s, "a", "bytes of any kind in front"},
  };
  for (const auto& row : rows) {
    for (bool allowMissing : {false, true}) {
      Outcome outcome = parse(blob(row.document), allowMissing, kBQStringEncodingASCII);
      EXPECT_EQ(outcome.name, row.name) << row.why << ": " << outcome.message;
      EXPECT_EQ(outcome.written, "") << row.why;
    }
  }
}

TEST(Parsing, ADocumentWithoutDeclarationIsReadInTheEncodingGiven) {
  const std::string none = "No valid XML data in response";
  for (const char* document : {"<a/>", "", "<?xm l?><a/>", "text", "<a><?xm"}) {
    Outcome outcome = parse(blob(document), false);
    EXPECT_EQ(outcome.message, none) << document;
    EXPECT_EQ(outcome.written, "") << document;
  }
  EXPECT_EQ(parse(blob("<a>\u00e9</a>"), true).name, "a \u00e9");
  EXPECT_EQ(parse(blob("<a>\xe9</a>"), true, kBQStringEncodingISOLatin1).name, "a \u00e9");
  EXPECT_EQ(parse(blob("\0<\0a\0/\0>"s), true, kBQStringEncodingUTF16BE).name, "a");
  for (BQStringEncoding given : {kBQStringEncodingASCII, kBQStringEncodingUTF16, kBQStringEncodingUTF16LE}) {
    const std::string declared =
        "\0<\0?\0x\0m\0l\0 \0v\0e\0r\0s\0i\0o\0n\0=\0'\0001\0.\0000\0'\0?\0>\0<\0a\0/\0>"s;
    EXPECT_EQ(parse(blob("\xef\xbb\xbf<a>\u00e9</a>"), true, given).name, "a \u00e9") << "a mark says UTF-8";
    EXPECT_EQ(parse(blob("\xfe\xff" + declared), true, given).name, "a") << "a mark says UTF-16";
    EXPECT_EQ(parse(blob(declared), true, given).name, "a") << "UTF-16 with a declaration";
  }
  EXPECT_EQ(parse(blob("<a/>"), true, 0x7777).message, none) << "the declaration cannot be written";
}

TEST(Parsing, ADocumentIsReadInEveryEncodingThatTheHeaderNames) {
  auto encoded = [](const char* text, BQStringEncoding encoding) {
    return Value::adopt(BQStringCreateExternalRepresentation(string(text), encoding, 0));
  };
  for (const bq::EncodingRecord& encoding : bq::allEncodings()) {
    EXPECT_EQ(parse(encoded("<a>text</a>", encoding.number), true, encoding.number).name, "a text")
        << encoding.name.bytes;
    std::string own = "<?xml version='1.0' encoding='"s + encoding.name.bytes + "'?><a>text</a>";
    EXPECT_EQ(parse(encoded(own.c_str(), encoding.number), true, encoding.number).name, "a text") << own;
  }
}

TEST(Parsing, FailureGivesTheDescriptionAndWhereItFailed) {
  const struct {
    std::string document;
    std::string message;
  } rows[] = {
      {"<?xml version='1.0'?>\n<a>\n</b>", R"(.+ \(line 3, pos 28, status [0-9]+\))"},
      {"<?xml version='1.0'?>", R"(.+ \(line 1, pos 21, status [0-9]+\))"},
      {"junk\n<?xml version='1.0'?>\n<", R"(.+ \(line 2, pos [0-9]+, status [0-9]+\))"},
  };
  for (const auto& row : rows) {
    Outcome outcome = parse(blob(row.document), false);
    EXPECT_TRUE(testing::internal::RE::FullMatch(outcome.message, row.message)) << outcome.message;
    EXPECT_EQ(outcome.written.rfind("XML Parse error occurred: {", 0), 0u) << outcome.written;
  }
  EXPECT_NE(parse(Value(), true).message, "") << "no data";
}

TEST(Parsing, MakesNoCopyOfADocumentBehindJunk) {
  Value document = blob("junk<?xml version='1.0'?><a>kept</a>");
  EXPECT_EQ(parse(document, false).name, "a kept");
  EXPECT_EQ(BQGetRetainCount(document), 1) << "the tree does not hold on to the bytes";
}

}  // namespace
