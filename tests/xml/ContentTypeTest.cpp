#include "xml/ContentType.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

/* A response with that type, or without any. */
Value responseWith(const char* contentType) {
  Value response = Value::adopt(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK")));
  if (contentType == nullptr) return response;
  auto* message = response.as<BQHTTPMessage>();
  EXPECT_TRUE(BQHTTPMessageSetHeaderFieldValue(message, BQSTR("content-type"), string(contentType)));
  return response;
}

TEST(ContentType, NamesTheEncoding) {
  const std::pair<const char*, unsigned long> rows[] = {
      {nullptr, kBQStringEncodingUTF8},
      {"text/xml", kBQStringEncodingUTF8},
      {"text/xml; charset=;", kBQStringEncodingUTF8},
      {"text/xml; charset=\"\"", kBQStringEncodingUTF8},
      {"text/xml; charset='", kBQStringEncodingUTF8},
      {"text/xml; charset=\"ISO-8859-1\"", kBQStringEncodingISOLatin1},
      {"text/xml;CHARSET='iso-8859-1'; x=y", kBQStringEncodingISOLatin1},
      {"text/xml; charset=utf-16be;", kBQStringEncodingUTF16BE},
      {"text/xml; charset=no-such-set", kBQStringEncodingASCII},
      {"text/xml; charset= ISO-8859-1", kBQStringEncodingASCII} /* a blank is part of the name */
  };
  for (auto [contentType, encoding] : rows) {
    EXPECT_EQ(vx::getResponseCharset(responseWith(contentType)), encoding) << contentType;
  }
}

TEST(ContentType, TellsXMLAndText) {
  const struct {
    const char* contentType;
    bool isXML;
    bool isText;
  } rows[] = {{nullptr, false, true},
              {"text/xml; charset=utf-8", true, true},
              {"TEXT/XML", true, false},
              {"application/vnd/XML+zip", true, false},
              {"application/soap+xml", false, false},
              {"text/html", false, true},
              {"image/png", false, false}};
  for (const auto& row : rows) {
    unsigned char isXML = 2, isText = 2;
    vx::checkForXMLContent(responseWith(row.contentType), &isXML, &isText);
    EXPECT_EQ(isXML, row.isXML) << row.contentType;
    EXPECT_EQ(isText, row.isText) << row.contentType;
  }
}

}  // namespace
