#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "platform/http/HTTPMessage.h"
#include "platform/http/TestStrings.h"

namespace {

using Message = bq::Ref<BQHTTPMessage>;

Message request(const std::string& method = "POST", const std::string& address = "http://host/",
                const BQString* version = nullptr) {
  return Message::adopt(BQHTTPMessageCreateRequest(string(method).get(), url(address).get(), version));
}

bool set(const Message& message, const std::string& name, const std::string& value) {
  return BQHTTPMessageSetHeaderFieldValue(message.get(), string(name).get(), string(value).get());
}

bool add(const Message& message, const std::string& name, const std::string& value) {
  return BQHTTPMessageAddHeaderFieldValue(message.get(), string(name).get(), string(value).get());
}

std::string value(const Message& message, const std::string& name) {
  return take(BQHTTPMessageCopyHeaderFieldValue(message.get(), string(name).get()));
}

/* "Name=value;" for every header in order. */
std::string allFields(const Message& message) {
  auto fields = bq::Ref<const BQDictionary>::adopt(BQHTTPMessageCopyAllHeaderFields(message.get()));
  std::vector<BQTypeRef> names(static_cast<size_t>(BQDictionaryGetCount(fields.get()))), values(names.size());
  BQDictionaryGetKeysAndValues(fields.get(), names.data(), values.data());
  std::string result;
  for (size_t i = 0; i < names.size(); ++i) {
    result += text(static_cast<const BQString*>(names[i])) + "=" +
              text(static_cast<const BQString*>(values[i])) + ";";
  }
  return result;
}

TEST(HTTPMessage, RequestHoldsWhatItWasMadeOf) {
  Message message = request("PUT", "http://host/x", kBQHTTPVersion1_0);
  EXPECT_TRUE(BQHTTPMessageIsRequest(message.get()));
  EXPECT_EQ(take(BQHTTPMessageCopyRequestMethod(message.get())), "PUT");
  auto address = bq::Ref<const BQURL>::adopt(BQHTTPMessageCopyRequestURL(message.get()));
  EXPECT_EQ(text(BQURLGetString(address.get())), "http://host/x");
  EXPECT_EQ(take(BQHTTPMessageCopyVersion(message.get())), "HTTP/1.0");
  EXPECT_EQ(BQHTTPMessageGetResponseStatusCode(message.get()), 0);
  EXPECT_EQ(BQHTTPMessageCopyResponseStatusLine(message.get()), nullptr);
  EXPECT_EQ(take(BQHTTPMessageCopyVersion(request().get())), "HTTP/1.1");
  EXPECT_TRUE(request("POST", "http://host/", string("HTTP/1.1").get()));
}

TEST(HTTPMessage, RefusesUnusableRequests) {
  EXPECT_FALSE(request(""));
  EXPECT_FALSE(request("PO ST"));
  EXPECT_FALSE(request("POST\r\nX: y"));
  EXPECT_FALSE(request("PÖST"));
  EXPECT_FALSE(request(std::string("POST\0", 5)));
  EXPECT_FALSE(request("POST", "relative/path"));
  EXPECT_FALSE(request("POST", "http://host/", string("HTTP/2").get()));
  EXPECT_EQ(BQHTTPMessageCreateRequest(BQSTR("GET"), nullptr, nullptr), nullptr);
  EXPECT_EQ(BQHTTPMessageCreateRequest(nullptr, url("http://host/").get(), nullptr), nullptr);
}

TEST(HTTPMessage, ReadsStatusLines) {
  const struct {
    std::string line;
    int code; /* 0: refused */
    const char* version;
  } table[] = {
      {"HTTP/1.1 404 Not Found", 404, "HTTP/1.1"},
      {"HTTP/1.0 200", 200, "HTTP/1.0"},
      {"HTTP/1.1 200 ", 200, "HTTP/1.1"},
      {"HTTP/3.0 599 What?", 599, "HTTP/3.0"},
      {"HTTP/1.1 099 Low", 0, nullptr},
      {"HTTP/1.1 20 OK", 0, nullptr},
      {"HTTP/1.1 2000 OK", 0, nullptr},
      {"HTTP/1.1  200 OK", 0, nullptr},
      {"http/1.1 200 OK", 0, nullptr},
      {"HTTP/1 200 OK", 0, nullptr},
      {"HTTP/1.1 200 OK\r\n", 0, nullptr},
      {"", 0, nullptr},
      {"HTTP/1.1 2x0 OK", 0, nullptr},
      {std::string("HTTP/1.1 200 a\0b", 16), 0, nullptr},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.line);
    Message message = Message::adopt(BQHTTPMessageCreateResponse(string(row.line).get()));
    ASSERT_EQ(bool(message), row.code != 0);
    if (!message) continue;
    EXPECT_FALSE(BQHTTPMessageIsRequest(message.get()));
    EXPECT_EQ(BQHTTPMessageGetResponseStatusCode(message.get()), row.code);
    EXPECT_EQ(take(BQHTTPMessageCopyResponseStatusLine(message.get())), row.line);
    EXPECT_EQ(take(BQHTTPMessageCopyVersion(message.get())), row.version);
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
  EXPECT_EQ(value(message, "Missing"), "(null)");
  EXPECT_EQ(allFields(message), "Host=a;X-One=1, 2;Empty=;");
  EXPECT_TRUE(set(message, "HOST", "b"));
  EXPECT_TRUE(set(message, "x-ONE", "3"));
  EXPECT_EQ(allFields(message), "Host=b;X-One=3;Empty=;");
  EXPECT_TRUE(BQHTTPMessageSetHeaderFieldValue(message.get(), BQSTR("x-one"), nullptr));
  EXPECT_EQ(allFields(message), "Host=b;Empty=;");
}

TEST(HTTPMessage, RefusesHeadersThatWouldBreakTheirLine) {
  Message message = request();
  const std::pair<std::string, std::string> table[] = {
      {"", "x"},
      {"Na me", "x"},
      {"Name:", "x"},
      {"Name\r\nX", "x"},
      {"N\xC3\xA4me", "x"},
      {"Name", "a\rb"},
      {"Name", "a\nb"},
      {"Name", std::string("a\0b", 3)},
      {"Name", "x\r\nSet-Cookie: y"},
  };
  for (const auto& [name, value] : table) {
    SCOPED_TRACE(name + ": " + value);
    EXPECT_FALSE(set(message, name, value));
    EXPECT_FALSE(add(message, name, value));
  }
  auto* number = reinterpret_cast<const BQString*>(kBQNull);
  EXPECT_FALSE(BQHTTPMessageSetHeaderFieldValue(message.get(), BQSTR("Name"), number));
  EXPECT_FALSE(BQHTTPMessageAddHeaderFieldValue(message.get(), BQSTR("Name"), nullptr));
  EXPECT_FALSE(BQHTTPMessageSetHeaderFieldValue(nullptr, BQSTR("Name"), BQSTR("x")));
  EXPECT_EQ(allFields(message), "");
}

TEST(HTTPMessage, CopyIsIndependent) {
  Message message = request();
  set(message, "A", "1");
  auto body = bq::Ref<BQData>::adopt(BQDataCreateMutable(4));
  BQDataAppendBytes(body.get(), "one", 3);
  BQHTTPMessageSetBody(message.get(), body.get());
  Message copy = Message::adopt(BQHTTPMessageCreateCopy(message.get()));
  set(copy, "A", "2");
  BQDataAppendBytes(body.get(), "two", 3);
  EXPECT_EQ(value(message, "A"), "1");
  EXPECT_EQ(value(copy, "A"), "2");
  auto copied = bq::Ref<const BQData>::adopt(BQHTTPMessageCopyBody(copy.get()));
  EXPECT_EQ(BQDataGetLength(copied.get()), 3);
  BQHTTPMessageSetBody(message.get(), nullptr);
  EXPECT_EQ(BQHTTPMessageCopyBody(message.get()), nullptr);
  EXPECT_EQ(BQHTTPMessageCreateCopy(reinterpret_cast<BQHTTPMessage*>(body.get())), nullptr);
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
  EXPECT_EQ(take(BQHTTPMessageCopyResponseStatusLine(message.get())), "HTTP/1.1 200 Grüß");
  EXPECT_EQ(allFields(message), "Folded=one two three;Latin=été;UTF8=é;Blank=;Plain=v;");
}

TEST(HTTPMessage, ManyReceivedHeadersAreGrouped) {
  std::string lines = "HTTP/1.1 200 OK\r\n";
  for (int i = 0; i < 20000; ++i) lines += "H" + std::to_string(i % 10000) + ": v\r\n";
  auto fields = bq::Ref<const BQDictionary>::adopt(
      BQHTTPMessageCopyAllHeaderFields(bq::makeReceivedResponse(lines).get()));
  EXPECT_EQ(BQDictionaryGetCount(fields.get()), 10000);
  auto* first = static_cast<const BQString*>(BQDictionaryGetValue(fields.get(), BQSTR("H0")));
  EXPECT_EQ(text(first), "v, v");
}

}  // namespace
