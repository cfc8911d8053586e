#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "support/Values.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace {

using namespace support;

/* Makes values that XML-RPC carries whole: no empty strings, doubles of six digits, whole seconds. */
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  Value make(int depth) {
    switch (below(depth > 0 ? 8 : 6)) {
      case 0:
        return integer(static_cast<int32_t>(random_()));
      case 1:
        return real((static_cast<int>(below(20000)) - 10000) / 4.0);
      case 2:
        return Value::retain(below(2) == 0 ? kBQBooleanTrue : kBQBooleanFalse);
      case 3:
        return string(makeText());
      case 4:
        return date(BQGregorianDateGetAbsoluteTime({static_cast<int32_t>(below(9999) + 1), 1, 1, 0, 0, 0}) +
                    below(366 * 86400));
      case 5:
        return blob(makeBytes());
      case 6:
        return makeArray(depth);
      default:
        return makeStruct(depth);
    }
  }

 private:
  unsigned below(unsigned limit) { return random_() % limit; }

  std::string makeText() {
    static const std::string kPieces[] = {"a",          " ",     "<",      ">",
                                          "&",          "&amp;", "\"",     "'",
                                          "]]>",        "\n",    "\u00e9", "\u65e5\u672c",
                                          "\U0001F600", "<!--",  "%@",     "plain text of some length"};
    std::string text = "x";
    for (unsigned i = below(40); i > 0; --i) text += kPieces[below(std::size(kPieces))];
    return text;
  }

  std::string makeBytes() {
    std::string bytes(below(150), '\0');
    for (char& byte : bytes) byte = static_cast<char>(random_());
    return bytes;
  }

  Value makeArray(int depth) {
    Value values = array({});
    for (unsigned i = below(5); i > 0; --i) BQArrayAppendValue(values.as<BQArray>(), make(depth - 1));
    return values;
  }

  Value makeStruct(int depth) {
    Value members = dictionary({});
    for (unsigned i = below(5); i > 0; --i) {
      std::string name = "member " + std::to_string(below(100)) + "\u00e9";
      BQDictionarySetValue(members.as<BQDictionary>(), string(name), make(depth - 1));
    }
    return members;
  }

  std::mt19937 random_;
};

TEST(RoundTrip, RepliesAndRequestsReadBackAsTheyWereWritten) {
  vx::XMLRPCProtocolHandler handler;
  for (unsigned seed = 0; seed < 500; ++seed) {
    Value value = Generator(seed).make(5);
    Value reply = Value::adopt(handler.createReply(nullptr, value));
    Value result = Value::adopt(handler.parseReplyData(nullptr, reply, kBQStringEncodingUTF8, nullptr));
    ASSERT_EQ(notation(result.get()), "{/Result: " + notation(value.get()) + "}") << "seed " << seed;

    Value request = Value::adopt(
        handler.createRequest(BQSTR("m"), dictionary({{"a", value}, {"b", value}}), nullptr, nullptr));
    Value read = Value::adopt(handler.parsePostData(request, kBQStringEncodingUTF8, nullptr));
    auto* parameters =
        static_cast<const BQDictionary*>(BQDictionaryGetValue(read, BQSTR("/VXMethodParameters")));
    ASSERT_EQ(notation(parameters),
              "{anon0: " + notation(value.get()) + ", anon1: " + notation(value.get()) + "}");
    ASSERT_TRUE(BQEqual(BQDictionaryGetValue(parameters, BQSTR("anon0")), value)) << "seed " << seed;
  }
}

}  // namespace
