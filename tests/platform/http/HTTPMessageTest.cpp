#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "platform/http/HTTPMessage.h"
#include "support/PlatformValues.h"

namespace {

using namespace values;

using Message = bq::Ref<BQHTTPMessage>;

Message request(std::string_view method = "POST", std::string_view address = "http://host/",
                std::string_view version = "HTTP/1.1") {
  auto url = own(BQURLCreateWithString(string(address).get(), nullptr));
  return own(BQHTTPMessageCreateRequest(string(method).get(), url.get(), string(version).get()));
}

bool set(const Message& message, std::string_view name, std::string_view value) {
  return BQHTTPMessageSetHeaderFieldValue(message.get(), string(name).get(), string(value).get());
}

bool add(const Message& message, std::string_view name, std::string_view value) {
  return BQHTTPMessageAddHeaderFieldValue(message.get(), string(name).get(), string(value).get());
}

std::string value(const Message& message, std::string_view name) {
  return text(own(BQHTTPMessageCopyHeaderFieldValue(message.get(), string(name).get())));
}

/* All headers in order. */
std::string fields(const Message& message) {
  return describe(own(BQHTTPMessageCopyAllHeaderFields(message.get())).get());
}

TEST(HTTPMessage, RequestIsNoResponse) {
  Message message = request("PUT", "http://host/x", "HTTP/1.0");
  EXPECT_TRUE(BQHTTPMessageIsRequest(message.get()));
  EXPECT_EQ(text(own(BQHTTPMessageCopyRequestMethod(message.get()))), "PUT");
  EXPECT_EQ(text(BQURLGetString(own(BQHTTPMessageCopyRequestURL(message.get())).get())), "http://host/x");
  EXPECT_EQ(text(own(BQHTTPMessageCopyVersion(message.get()))), "HTTP/1.0");
  EXPECT_EQ(BQHTTPMessageGetResponseStatusCode(message.get()), 0);
  EXPECT_EQ(BQHTTPMessageCopyResponseStatusLine(message.get()), nullptr);
}

TEST(HTTPMessage, RefusesUnusableRequests) {
  for (const char* method : {"", "PO ST", "POST\r\nX: y", "PÖST"}) EXPECT_FALSE(request(method)) << method;
  EXPECT_FALSE(request({"POST\0", 5}));
  EXPECT_FALSE(request("POST", "relative/path"));
  EXPECT_FALSE(request("POST", "http://host/", "HTTP/2"));
}

TEST(HTTPMessage, ReadsStatusLines) {
  const struct {
    std::string line;
    int code; /* 0: refused */
    const char* version;
  } table[] = {
      {"HTTP/1.1 404 Not Found", 404, "HTTP/1.1"},
      {"HTTP/1.0 200", 200, "HTTP/1.0"},
      {"HTTP/3.0 599 What?", 599, "HTTP/3.0"},
      {"HTTP/1.1 099 Low", 0, nullptr},
      {"HTTP/1.1 20 OK", 0, nullptr},
      {"HTTP/1.1 2x0 OK", 0, nullptr},
      {"HTTP/1.1 2000 OK", 0, nullptr},
      {"HTTP/1.1  200 OK", 0, nullptr},
      {"http/1.1 200 OK", 0, nullptr},
      {"HTTP/1 200 OK", 0, nullptr},
      {"HTTP/1.1 200 OK\r\n", 0, nullptr},
      {"", 0, nullptr},
      {std::string("HTTP/1.1 200 a\0b", 16), 0, nullptr},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.line);
    Message message = own(BQHTTPMessageCreateResponse(string(row.line).get()));
    ASSERT_EQ(bool(message), row.code != 0);
    if (!message) continue;
    EXPECT_FALSE(BQHTTPMessageIsRequest(message.get()));
    EXPECT_EQ(BQHTTPMessageGetResponseStatusCode(message.get()), row.code);
    EXPECT_EQ(text(own(BQHTTPMessageCopyResponseStatusLine(message.get()))), row.line);
    EXPECT_EQ(text(own(BQHTTPMessageCopyVersion(message.get()))), row.version);
  }
}

TEST(HTTPMessage, HeadersKeepTheirOrderAndAreFoundInAnyCase) {
  Message message = request();
  EXPECT_TRUE(set(message, "Host", "a"));
  EXPECT_TRUE(set(message, "X-One", "1"));
  EXPECT_TRUE(add(message, "x-one", "2"));
  EXPECT_TRUE(set(message, "Empty", ""));
  EXPECT_EQ(value(message, "HOST"), "a");
  EXPECT_EQ(value(message, "X-ONE"), "1, 2");
  EXPECT_EQ(value(message, "Missing"), "(none)");
  EXPECT_EQ(fields(message), R"({"Host": "a", "X-One": "1, 2", "Empty": ""})");
  EXPECT_TRUE(set(message, "HOST", "b"));
  EXPECT_TRUE(set(message, "x-ONE", "3"));
  EXPECT_EQ(fields(message), R"({"Host": "b", "X-One": "3", "Empty": ""})");
  EXPECT_TRUE(BQHTTPMessageSetHeaderFieldValue(message.get(), BQSTR("x-one"), nullptr));
  EXPECT_EQ(fields(message), R"({"Host": "b", "Empty": ""})");
}

TEST(HTTPMessage, RefusesHeadersThatWouldBreakTheirLine) {
  Message message = request();
  const std::pair<std::string, std::string> table[] = {{"", "x"},
                                                       {"Na me", "x"},
                                                       {"Name:", "x"},
                                                       {"Name\r\nX", "x"},
                                                       {"N\xC3\xA4me", "x"},
                                                       {"Name", "a\rb"},
                                                       {"Name", "x\nSet-Cookie: y"},
                                                       {"Name", std::string("a\0b", 3)}};
  for (const auto& [name, value] : table) {
    SCOPED_TRACE(name + ": " + value);
    EXPECT_FALSE(set(message, name, value));
    EXPECT_FALSE(add(message, name, value));
  }
  EXPECT_EQ(fields(message), "{}");
}

TEST(HTTPMessage, CopyIsIndependent) {
  Message message = request();
  set(message, "A", "1");
  auto body = own(BQDataCreateMutable(4));
  BQDataAppendBytes(body.get(), "one", 3);
  BQHTTPMessageSetBody(message.get(), body.get());
  Message copy = own(BQHTTPMessageCreateCopy(message.get()));
  set(copy, "A", "2");
  BQDataAppendBytes(body.get(), "two", 3);
  EXPECT_EQ(value(message, "A"), "1");
  EXPECT_EQ(value(copy, "A"), "2");
  EXPECT_EQ(BQDataGetLength(own(BQHTTPMessageCopyBody(copy.get())).get()), 3);
  BQHTTPMessageSetBody(message.get(), nullptr);
  EXPECT_EQ(BQHTTPMessageCopyBody(message.get()), nullptr);
}

TEST(HTTPMessage, ReceivedHeadersAreUnfoldedAndDecoded) {
  Message message = bq::makeReceivedResponse(
      "HTTP/1.1 200 Gr\xFC\xDF\r\n"
      "Folded: one\r\n  two\r\n\tthree\r\n"
      "Latin: \xE9t\xE9\r\n"
      "UTF8: \xC3\xA9\r\n"
      "No colon\r\n"
      ": no name\r\n"
      "Bad name : x\r\n"
      "Blank:   \t \r\n"
      "Plain:v\n");
  ASSERT_TRUE(message);
  EXPECT_EQ(text(own(BQHTTPMessageCopyResponseStatusLine(message.get()))), "HTTP/1.1 200 Grüß");
  EXPECT_EQ(fields(message),
            R"({"Folded": "one two three", "Latin": "été", "UTF8": "é", "Blank": "", "Plain": "v"})");
}

TEST(HTTPMessage, ManyReceivedHeadersAreGrouped) {
  std::string lines = "HTTP/1.1 200 OK\r\n";
  for (int i = 0; i < 20000; ++i) lines += "H" + std::to_string(i % 10000) + ": v\r\n";
  auto fields = own(BQHTTPMessageCopyAllHeaderFields(bq::makeReceivedResponse(lines).get()));
  EXPECT_EQ(BQDictionaryGetCount(fields.get()), 10000);
  EXPECT_TRUE(BQEqual(BQDictionaryGetValue(fields.get(), BQSTR("H0")), BQSTR("v, v")));
}

}  // namespace
