#include "platform/http/HTTPMessage.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/PlatformValues.h"

namespace {

using namespace values;

using Message = bq::Ref<BQHTTPMessage>;

Message request(std::string_view method = "POST", std::string_view address = "http://host/x",
                std::string_view version = "HTTP/1.0") {
  auto url = own(BQURLCreateWithString(string(address).get(), nullptr));
  return own(BQHTTPMessageCreateRequest(string(method).get(), url.get(), string(version).get()));
}

bool set(const Message& message, std::string_view name, std::string_view value) {
  return BQHTTPMessageSetHeaderFieldValue(message.get(), string(name).get(), string(value).get());
}

bool add(const Message& message, std::string_view name, std::string_view value) {
  return BQHTTPMessageAddHeaderFieldValue(message.get(), string(name).get(), string(value).get());
}

/* All headers in order. */
std::string fields(const Message& message) {
  return describe(own(BQHTTPMessageCopyAllHeaderFields(message.get())).get());
}

TEST(HTTPMessage, RequestIsNotAResponse) {
  Message message = request("PUT");
  EXPECT_TRUE(BQHTTPMessageIsRequest(message.get()));
  EXPECT_EQ(text(own(BQHTTPMessageCopyRequestMethod(message.get()))), "PUT");
  EXPECT_EQ(text(BQURLGetString(own(BQHTTPMessageCopyRequestURL(message.get())).get())), "http://host/x");
  EXPECT_EQ(text(own(BQHTTPMessageCopyVersion(message.get()))), "HTTP/1.0");
  EXPECT_EQ(BQHTTPMessageGetResponseStatusCode(message.get()), 0);
  EXPECT_EQ(BQHTTPMessageCopyResponseStatusLine(message.get()), nullptr);
}

TEST(HTTPMessage, RefusesUnusableRequests) {
  for (std::string_view method : {std::string_view(), std::string_view("POST\r\nX: y"),
                                  std::string_view("PÖST"), std::string_view("POST\0", 5)}) {
    EXPECT_FALSE(request(method)) << method;
  }
  EXPECT_FALSE(request("POST", "relative/path"));
  EXPECT_FALSE(request("POST", "http://host/", "HTTP/2"));
}

/* A status line, its code, which is 0 if it is refused, and its version. */
TEST(HTTPMessage, ReadsStatusLines) {
  const std::tuple<std::string, int, const char*> table[] = {
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
      {std::string("HTTP/1.1 200 a\0b", 16), 0, nullptr},
  };
  for (const auto& [line, code, version] : table) {
    SCOPED_TRACE(line);
    Message message = own(BQHTTPMessageCreateResponse(string(line).get()));
    ASSERT_EQ(bool(message), code != 0);
    EXPECT_FALSE(BQHTTPMessageIsRequest(message.get()));
    EXPECT_EQ(BQHTTPMessageGetResponseStatusCode(message.get()), code);
    EXPECT_EQ(text(own(BQHTTPMessageCopyResponseStatusLine(message.get()))), message ? line : "(none)");
    EXPECT_EQ(text(own(BQHTTPMessageCopyVersion(message.get()))), message ? version : "(none)");
  }
}

TEST(HTTPMessage, HeadersKeepTheirOrderAndAreFoundInAnyCase) {
  Message message = request();
  EXPECT_TRUE(set(message, "Host", "a") && set(message, "X-One", "1") && add(message, "x-one", "2"));
  EXPECT_TRUE(set(message, "Empty", ""));
  EXPECT_EQ(text(own(BQHTTPMessageCopyHeaderFieldValue(message.get(), BQSTR("X-ONE")))), "1, 2");
  EXPECT_EQ(BQHTTPMessageCopyHeaderFieldValue(message.get(), BQSTR("Missing")), nullptr);
  EXPECT_EQ(fields(message), R"({"Host": "a", "X-One": "1, 2", "Empty": ""})");
  EXPECT_TRUE(set(message, "HOST", "b") && set(message, "x-ONE", "3"));
  EXPECT_EQ(fields(message), R"({"Host": "b", "X-One": "3", "Empty": ""})");
  EXPECT_TRUE(BQHTTPMessageSetHeaderFieldValue(message.get(), BQSTR("x-one"), nullptr));
  EXPECT_EQ(fields(message), R"({"Host": "b", "Empty": ""})");
}

TEST(HTTPMessage, RefusesHeadersThatWouldBreakTheirLine) {
  Message message = request();
  const std::pair<std::string, std::string> table[] = {
      {"", "x"},     {"Na me", "x"},   {"Name:", "x"},           {"Name\r\nX", "x"},
      {"Näme", "x"}, {"Name", "a\rb"}, {"Name", "x\nCookie: y"}, {"Name", std::string("a\0b", 3)}};
  for (const auto& [name, value] : table) {
    EXPECT_FALSE(set(message, name, value) || add(message, name, value)) << name << ": " << value;
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
  BQHTTPMessageSetBody(message.get(), nullptr);
  EXPECT_EQ(BQHTTPMessageCopyBody(message.get()), nullptr);
  EXPECT_EQ(fields(message) + fields(copy), R"({"A": "1"}{"A": "2"})");
  EXPECT_EQ(bytes(own(BQHTTPMessageCopyBody(copy.get())).get()), "one");
}

TEST(HTTPMessage, ReceivedHeadersAreUnfoldedDecodedAndGrouped) {
  std::string lines =
      "HTTP/1.1 200 Gr\xFC\xDF\r\nFolded: one\r\n  two\r\n\tthree\r\nLatin: \xE9t\xE9\r\nUTF8: \xC3\xA9\r\n"
      "No colon\r\n: no name\r\nBad name : x\r\nBlank:   \t \r\nPlain:v\n";
  Message message = bq::makeReceivedResponse(lines);
  EXPECT_EQ(text(own(BQHTTPMessageCopyResponseStatusLine(message.get()))), "HTTP/1.1 200 Grüß");
  EXPECT_EQ(fields(message),
            R"({"Folded": "one two three", "Latin": "été", "UTF8": "é", "Blank": "", "Plain": "v"})");
  for (int i = 0; i < 20000; ++i) lines += "H" + std::to_string(i % 10000) + ": v\r\n";
  auto many = own(BQHTTPMessageCopyAllHeaderFields(bq::makeReceivedResponse(lines).get()));
  EXPECT_EQ(BQDictionaryGetCount(many.get()), 10005);
  EXPECT_EQ(describe(BQDictionaryGetValue(many.get(), BQSTR("H0"))), "v, v");
}

}  // namespace
