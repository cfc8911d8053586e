#include "xml/ContentType.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

TEST(ContentType, NamesTheEncodingAndTellsXMLAndText) {
  const struct {
    const char* contentType;
    unsigned long encoding;
    bool isXML, isText;
  } rows[] = {
      {nullptr, kBQStringEncodingUTF8, false, true},
      {"text/xml", kBQStringEncodingUTF8, true, true},
      {"TEXT/XML; charset=;", kBQStringEncodingUTF8, true, false},
      {"application/vnd/XML+zip; charset=\"\"", kBQStringEncodingUTF8, true, false},
      {"application/soap+xml; charset='", kBQStringEncodingUTF8, false, false},
      {"text/html; charset=\"ISO-8859-1\"", kBQStringEncodingISOLatin1, false, true},
      {"image/png;CHARSET='iso-8859-1'; x=y", kBQStringEncodingISOLatin1, false, false},
      {"text/xml; charset=utf-16be;", kBQStringEncodingUTF16BE, true, true},
      {"text/xml; charset=no-such-set", kBQStringEncodingASCII, true, true},
      {"text/xml; charset= ISO-8859-1", kBQStringEncodingASCII, true, true} /* a blank is part of the name */
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.contentType);
    Value response = Value::adopt(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK")));
    if (row.contentType != nullptr) {
      BQHTTPMessageSetHeaderFieldValue(response.as<BQHTTPMessage>(), BQSTR("content-type"),
                                       string(row.contentType));
    }
    unsigned char isXML = 2, isText = 2;
    vx::checkForXMLContent(response, &isXML, &isText);
    EXPECT_EQ(vx::getResponseCharset(response), row.encoding);
    EXPECT_EQ(isXML, row.isXML);
    EXPECT_EQ(isText, row.isText);
  }
}

}  // namespace
