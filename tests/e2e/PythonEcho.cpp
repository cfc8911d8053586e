/*
 * Values go out to a server of another make in another process, whose method gives them back.
 * They are written here as property lists, which have a form for each kind.
 */
#include <memory>
#include <string>

#include <BQ/BQ.h>
#include <VX/VX.h>
#include <gtest/gtest.h>

#include "support/PeerProcess.h"

namespace {

BQRef<const BQString> makeString(const std::string& text) {
  return BQAdopt(BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size())));
}

BQRef<const void> fromList(const std::string& element) {
  std::string list =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">" + element + "</plist>";
  auto data = BQAdopt(BQDataCreate(list.data(), static_cast<BQIndex>(list.size())));
  return BQAdopt(BQPropertyListCreateFromXMLData(data.get(), nullptr));
}

std::string describe(BQTypeRef value) {
  auto description = BQAdopt(BQCopyDescription(value));
  return BQStringGetUTF8Ptr(description.get());
}

class PythonEcho : public testing::Test {
 protected:
  static void SetUpTestSuite() { peer_ = std::make_unique<PeerProcess>(PYTHON_PROGRAM, PYTHON_PEER_SCRIPT); }
  static void TearDownTestSuite() { peer_.reset(); }

  /* The result dictionary of a call with one parameter; a null value is sent as nil. */
  static BQRef<const BQDictionary> call(const BQString* method, BQTypeRef value) {
    BQRef<const BQString> text = makeString(peer_->url("/RPC2"));
    auto url = BQAdopt(BQURLCreateWithString(text.get(), nullptr));
    auto invocation = BQAdopt(VXMethodInvocationCreate(url.get(), method, kVXXMLRPCProtocol));
    BQTypeRef name = BQSTR("value");
    auto parameters = BQAdopt(BQDictionaryCreate(&name, &value, 1));
    auto order = BQAdopt(BQArrayCreate(&name, 1));
    VXMethodInvocationSetParameters(invocation.get(), parameters.get(), order.get());
    return BQAdopt(VXMethodInvocationInvoke(invocation.get()));
  }

  static BQRef<const void> echo(BQTypeRef value) {
    BQRef<const BQDictionary> result = call(BQSTR("echo"), value);
    EXPECT_FALSE(VXMethodResultIsFault(result.get())) << describe(result.get());
    return BQRef<const void>::retain(BQDictionaryGetValue(result.get(), kVXMethodInvocationResult));
  }

  static void expectEcho(BQTypeRef value, BQTypeRef expected) {
    BQRef<const void> echoed = echo(value);
    EXPECT_TRUE(BQEqual(echoed.get(), expected)) << describe(echoed.get()) << "\nnot\n" << describe(expected);
  }

  static std::unique_ptr<PeerProcess> peer_;
};

std::unique_ptr<PeerProcess> PythonEcho::peer_;

std::string nested(int depth) {
  return depth == 0 ? "<string>bottom</string>"
                    : "<array><dict><key>in</key>" + nested(depth - 1) + "</dict></array>";
}

TEST_F(PythonEcho, GivesBackEqualValues) {
  const std::string lists[] = {
      "<integer>0</integer>",
      "<integer>1</integer>",
      "<integer>-1</integer>",
      "<integer>2147483647</integer>",
      "<integer>-2147483648</integer>",
      "<real>0</real>",
      "<real>-1234.5</real>",
      "<real>0.1</real>",
      "<real>123456</real>",
      "<real>1e+20</real>",
      "<real>-2.5e-300</real>",
      "<true/>",
      "<false/>",
      "<string>plain</string>",
      "<string> blanks at both ends </string>",
      "<string>&lt;value&gt; &amp;amp; \"quoted\" 'single' ]]&gt;</string>",
      "<string>two\nlines\tand a tab</string>",
      "<string>\xC3\xA9 \xE2\x82\xAC \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x98\x80 \xC2\x85 \xC2\xA0</string>",
      "<string>100% %@ %s %n</string>",
      "<string>" + std::string(1000000, 'x') + "</string>",
      "<date>1998-07-17T14:08:55Z</date>",
      "<date>2000-02-29T23:59:59Z</date>",
      "<date>1969-12-31T23:59:59Z</date>",
      "<date>9999-12-31T23:59:59Z</date>",
      "<date>1000-01-01T00:00:00Z</date>",
      "<array/>",
      "<dict/>",
      "<array><array/><dict/><array><array/></array></array>",
      "<array><integer>1</integer><string>two</string><real>3.5</real><true/><data>AAEC</data>"
      "<date>1998-07-17T14:08:55Z</date></array>",
      "<dict><key>z</key><integer>1</integer><key>a b</key><array><string>x</string></array>"
      "<key>\xC3\xA9</key><dict><key>inner</key><false/></dict></dict>",
      "<array><string></string><string>after an empty one</string></array>",
      nested(40),
  };
  for (const std::string& list : lists) {
    SCOPED_TRACE(list.substr(0, 80));
    BQRef<const void> value = fromList(list);
    ASSERT_NE(value, nullptr);
    expectEcho(value.get(), value.get());
  }
}

TEST_F(PythonEcho, GivesBackDataOfEveryLengthAroundTheLinesOfItsText) {
  std::string bytes;
  for (size_t i = 0; i < 100000; ++i) bytes += static_cast<char>(i * 7 + i / 256);
  auto expectSize = [&](size_t size) {
    SCOPED_TRACE(size);
    auto data = BQAdopt(BQDataCreate(bytes.data(), static_cast<BQIndex>(size)));
    expectEcho(data.get(), data.get());
  };
  for (size_t size = 0; size <= 120; ++size) expectSize(size);
  for (size_t size : {1023, 1024, 1025, 65535, 65536, 100000}) expectSize(size);
}

TEST_F(PythonEcho, GivesBackNumbersOfEveryWidth) {
  int8_t narrow = -128;
  int16_t shorter = 32767;
  int64_t wide = -2147483648;
  float single = 0.5f;
  const struct {
    BQNumberType type;
    const void* value;
  } numbers[] = {{kBQNumberSInt8Type, &narrow},
                 {kBQNumberSInt16Type, &shorter},
                 {kBQNumberSInt64Type, &wide},
                 {kBQNumberFloat32Type, &single}};
  for (const auto& [type, value] : numbers) {
    auto number = BQAdopt(BQNumberCreate(type, value));
    expectEcho(number.get(), number.get());
  }
}

/* What the protocol, as the library speaks it, cannot carry. */
TEST_F(PythonEcho, LosesWhatXMLRPCCannotCarry) {
  const struct {
    const char* sent;
    const char* received; /* null: no result at all */
  } rows[] = {
      {"<string></string>", nullptr},
      {"<integer>2147483648</integer>", "<integer>0</integer>"},
      {"<real>1234567.25</real>", "<real>1234570</real>"},
      {"<dict><key>/hidden</key><integer>1</integer><key>seen</key><integer>2</integer></dict>",
       "<dict><key>seen</key><integer>2</integer></dict>"},
  };
  for (const auto& [sent, received] : rows) {
    SCOPED_TRACE(sent);
    BQRef<const void> expected = received != nullptr ? fromList(received) : nullptr;
    expectEcho(fromList(sent).get(), expected.get());
  }
  /* The fraction of a second. */
  auto precise = BQAdopt(BQDateCreate(86399.75));
  auto whole = BQAdopt(BQDateCreate(86399));
  expectEcho(precise.get(), whole.get());
  /* A parameter without a value. */
  expectEcho(nullptr, fromList("<integer>0</integer>").get());
}

TEST_F(PythonEcho, GivesAnEmptyMemberAsNull) {
  BQRef<const void> echoed = echo(fromList("<dict><key>empty</key><string></string></dict>").get());
  ASSERT_EQ(BQGetTypeID(echoed.get()), BQDictionaryGetTypeID());
  EXPECT_EQ(BQDictionaryGetValue(static_cast<const BQDictionary*>(echoed.get()), BQSTR("empty")), kBQNull);
}

TEST_F(PythonEcho, ReadsTheTypesThatPythonWrites) {
  BQRef<const BQDictionary> result = call(BQSTR("kind"), fromList("<real>2.5</real>").get());
  BQRef<const void> expected = fromList("<array><string>float</string><string>2.5</string></array>");
  BQTypeRef kind = BQDictionaryGetValue(result.get(), kVXMethodInvocationResult);
  EXPECT_TRUE(BQEqual(kind, expected.get())) << describe(result.get());
}

}  // namespace
