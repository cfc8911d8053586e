#include "diag/Log.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

#include "diag/Switches.h"
#include "support/Values.h"
#include "transport/WebServiceResult.h"
#include "xml/Entities.h"
#include "xml/TreeAccess.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace {

using namespace support;
using namespace std::string_view_literals;

class Log : public testing::Test {
 protected:
  ~Log() override { vx::gVXDebug = vx::gVXDebugVerbose = 0; }

  /* What an action writes to the standard error stream with the switches set so. */
  static std::string written(const std::function<void()>& action, int debug = 0, int verbose = 0) {
    vx::gVXDebug = debug;
    vx::gVXDebugVerbose = verbose;
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
  }

  const std::string prefix_ = "VX (" + std::to_string(getpid()) + "): ";
};

TEST_F(Log, LineIsWrittenOnlyWhenTheSwitchIsOn) {
  auto line = [] { EXPECT_EQ(vx::_vxLogf("%d of %@\n", 5, array({string("a")}).get()), 0); };
  EXPECT_EQ(written(line, 0, 0), "");
  EXPECT_EQ(written(line, 0, 1), "");
  EXPECT_EQ(written(line, 1, 0), prefix_ + "5 of [\"a\"]\n\n");
  EXPECT_EQ(written(line, 1, 1), prefix_ + "5 of [\"a\"]\n\n");
}

TEST_F(Log, CharactersAreThoseOfTheLegacyWesternEncoding) {
  Value mixed = string("\u00e9 \u65e5\u672c \U0001F600!");
  EXPECT_EQ(written([&] { vx::_vxLogf("%@", mixed.get()); }, 1), prefix_ + "\x8e .. .!\n");
  EXPECT_EQ(written([&] { vx::vxPrintf(mixed); }), "\x8e .. .!");
}

TEST_F(Log, ControlCharactersAreEscaped) {
  Value controls = string("\0\x1b[2J\r\x7f\u009b\u061c\u200e\u202e\u2069\n\tx"sv);
  EXPECT_EQ(written([&] { vx::vxPrintf(controls); }),
            "\\u0000\\u001b[2J\\u000d\\u007f\\u009b\\u061c\\u200e\\u202e\\u2069\n\tx");
  EXPECT_EQ(text(vx::onOneLine(string("a\n\tb")).get()), "a\\u000a\\u0009b");
}

TEST_F(Log, PrintAddsNothingAndNeedsNoSwitch) {
  EXPECT_EQ(written([] { vx::vxPrintf(BQSTR("%s=%@"), "a", nullptr); }), "a=(null)");
  EXPECT_EQ(written([] { vx::vxPrintf(BQSTR("")); }), "");
  std::string large(100000, 'x');
  EXPECT_EQ(written([&] { vx::vxPrintf(string(large)); }), large);
}

TEST_F(Log, LongTextIsOneWrite) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
  int standardError = dup(STDERR_FILENO);
  dup2(ends[0], STDERR_FILENO);
  vx::vxPrintf(string(std::string(50000, 'x')));
  dup2(standardError, STDERR_FILENO);
  std::vector<char> packet(60000);
  EXPECT_EQ(recv(ends[1], packet.data(), packet.size(), MSG_DONTWAIT), 50000);
  for (int end : {ends[0], ends[1], standardError}) close(end);
}

TEST_F(Log, DictionaryIsDumpedAsPropertyListOrDescription) {
  auto dump = [](const Value& value) { return written([&] { vx::vxDumpDict("label", value); }); };
  std::string listed = dump(dictionary({{"k", string("a<b")}}));
  EXPECT_EQ(listed.rfind("label ---\n--------------\n<?xml", 0), 0u) << listed;
  EXPECT_NE(listed.find("<string>a&lt;b</string>"), std::string::npos) << listed;
  EXPECT_EQ(listed.substr(listed.size() - 16), "\n--------------\n");
  EXPECT_EQ(dump(dictionary({{"k", Value::retain(kBQNull)}})),
            "label ---\n--------------\n{\"k\": null}\n--------------\n");
  EXPECT_EQ(dump(Value()), "label ---\n--------------\n(null)\n--------------\n");
}

TEST_F(Log, VerboseMessagesNeedBothSwitches) {
  Value mixed = tree("<a>text<b/>&undeclared;</a>");
  const BQTree* root = BQTreeGetFirstChild(mixed);
  const struct {
    std::function<void()> action;
    std::string message;
  } rows[] = {
      {[] { vx::decodeEntityReference(BQSTR("LT")); }, "unknown escape entity reference: LT\n"},
      {[] { vx::decodeUnparsedEntityReference(BQSTR("lt")); }, "unknown escape entity reference: lt\n"},
      {[&] { vx::findNamedElement(root, BQSTR("b")); }, "findNamedElement: Ignoring type 6\n\n"},
      {[&] { Value::adopt(vx::copyXMLStringFromTree(BQTreeGetFirstChild(root))); },
       "strange node in the middle of a string: 2\n\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(written(row.action, 0, 0), "");
    EXPECT_EQ(written(row.action, 0, 1), "");
    EXPECT_EQ(written(row.action, 1, 0), "");
    EXPECT_EQ(written(row.action, 1, 1), prefix_ + row.message);
  }
}

TEST_F(Log, DumpOfAReplyNeedsTheVerboseSwitchAlone) {
  Value reply = tree("<methodResponse><params><param><value/></param></params></methodResponse>");
  auto read = [&] {
    vx::WebServiceResult result;
    vx::XMLRPCProtocolHandler().parseReply(&result, reply);
  };
  EXPECT_EQ(written(read, 0, 0), "");
  EXPECT_EQ(written(read, 1, 0), "");
  for (int debug : {0, 1}) {
    std::string dump = written(read, debug, 1);
    EXPECT_EQ(dump.rfind("XMLRPCWebServiceMethodInvocation::parseReply: reply tree\n   - 0x", 0), 0u) << dump;
    EXPECT_NE(dump.find("\n         - 0x"), std::string::npos) << "the value is four levels deep: " << dump;
  }
}

}  // namespace
