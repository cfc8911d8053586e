/*
 * What is nested is bounded, on both sides of each limit, and needs little stack on either: everything
 * here runs on a thread with a stack of 256 KiB.
 */
#include <VX/VX.h>
#include <gtest/gtest.h>

#include <string>

#include "diag/TreeDump.h"
#include "support/Constants.h"
#include "support/PlatformValues.h"
#include "support/Values.h"

namespace {

using namespace support;

constexpr int kFarBeyond = 1'000'000;

/* Containers around each other, arrays and dictionaries in turn. */
Value nested(int depth) {
  Value value = string("innermost");
  for (int i = 0; i < depth; ++i) {
    value = i % 2 == 0 ? array({value}) : dictionary({{"k", value}});
  }
  return value;
}

std::string repeated(const std::string& text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

struct Handler {
  explicit Handler(const BQString* protocol)
      : handle(Value::adopt(VXProtocolHandlerCreate(nullptr, protocol))) {}
  operator VXProtocolHandlerRef() const { return handle.as<OpaqueVXProtocolHandlerRef>(); }
  Value handle;
};

Value writeRequest(const BQString* protocol, const Value& value) {
  return Value::adopt(VXProtocolHandlerCopyRequestDocument(
      Handler(protocol), BQSTR("m"), dictionary({{"p", value}}), array({string("p")}), nullptr));
}

Value writeReply(const BQString* protocol, const Value& value) {
  Value request = dictionary({{"/VXMethodName", string("m")}});
  return Value::adopt(VXProtocolHandlerCopyReplyDocument(Handler(protocol), request, value));
}

/* An XML-RPC fault is a struct itself. */
Value writeFault(const BQString*, const Value& value) {
  Value fault = dictionary({{"/FaultString", value}});
  return Value::adopt(VXProtocolHandlerCopyFaultDocument(Handler(kVXXMLRPCProtocol), nullptr, fault));
}

Value writeList(const BQString*, const Value& value) {
  return Value::adopt(BQPropertyListCreateXMLData(value));
}

Value serialize(const BQString* protocol, const Value& value) {
  Value endpoint = url("http://h/");
  Value handle = Value::adopt(VXMethodInvocationCreate(endpoint, BQSTR("m"), protocol));
  auto* invocation = handle.as<OpaqueVXMethodInvocationRef>();
  VXMethodInvocationSetParameters(invocation, dictionary({{"p", value}}), nullptr);
  return Value::adopt(VXMethodInvocationCopySerialization(invocation));
}

/* The containers that fit around the innermost value. The writers of lists count elements. */
const struct {
  const char* what;
  Value (*write)(const BQString* protocol, const Value& value);
  int limit;
} kWriters[] = {{"request", writeRequest, 512},
                {"reply", writeReply, 512},
                {"fault", writeFault, 511},
                {"property list", writeList, 510},
                {"serialized invocation", serialize, 508}};

TEST(Limits, ValuesAreWrittenToTheirDepth) {
  Value far = nested(kFarBeyond);
  for (const BQString* protocol : kProtocols) {
    for (const auto& row : kWriters) {
      SCOPED_TRACE(row.what);
      auto isWritten = [&](const Value& value) { return row.write(protocol, value).get() != nullptr; };
      Value fits = nested(row.limit), tooDeep = nested(row.limit + 1);
      Value beside = array({nested(row.limit - 1), nested(row.limit - 1)});
      values::runOnSmallStack([&] {
        EXPECT_TRUE(isWritten(fits));
        EXPECT_TRUE(isWritten(beside)) << "side by side";
        EXPECT_FALSE(isWritten(tooDeep));
        EXPECT_FALSE(isWritten(far));
      });
    }
  }
}

/* Written out, a container that holds itself twice would double at each level. */
TEST(Limits, ContainersThatHoldThemselvesGiveNoDocumentAtOnce) {
  for (const BQString* protocol : kProtocols) {
    for (int times : {1, 2, 50}) {
      Value list = array({}), members = dictionary({});
      for (int i = 0; i < times; ++i) {
        BQArrayAppendValue(list.as<BQArray>(), list);
        BQDictionarySetValue(members.as<BQDictionary>(), string(std::to_string(i)), members);
      }
      for (const auto& row : kWriters) {
        EXPECT_EQ(row.write(protocol, list).get(), nullptr) << row.what << " " << times;
        EXPECT_EQ(row.write(protocol, members).get(), nullptr) << row.what << " " << times;
      }
      BQArrayRemoveAllValues(list.as<BQArray>());
      BQDictionaryRemoveAllValues(members.as<BQDictionary>());
    }
  }
}

Value readReply(const BQString* protocol, const Value& document) {
  return Value::adopt(VXProtocolHandlerCopyReplyDictionary(Handler(protocol), BQSTR("m"), document));
}

Value readRequest(const BQString* protocol, const Value& document) {
  return Value::adopt(VXProtocolHandlerCopyRequestDictionary(Handler(protocol), document));
}

Value readList(const BQString*, const Value& document) {
  return Value::adopt(BQPropertyListCreateFromXMLData(document, nullptr));
}

/* A parsed document that outlives its reading, and is printed. */
Value readTree(const BQString*, const Value& document) {
  Value tree = Value::adopt(BQXMLTreeCreateFromDataWithError(document, nullptr));
  if (tree.get() != nullptr) vx::dumpXMLTree(tree, 0);
  return tree;
}

constexpr const char* kEnvelope = "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body>";
constexpr const char* kEnvelopeEnd = "</e:Body></e:Envelope>";
constexpr const char* kReply = "<methodResponse><params><param><value>";
constexpr const char* kReplyEnd = "</value></param></params></methodResponse>";

/* Documents of 512 elements around each other, or of as many as their repeated part comes to. */
const struct {
  const char* what;
  Value (*read)(const BQString* protocol, const Value& document);
  const BQString* protocol;
  std::string start, each, innermost, eachEnd, end;
  int limit;
} kReaders[] = {
    {"XML-RPC reply", readReply, kVXXMLRPCProtocol, kReply, "<array><data><value>", "<int>1</int>",
     "</value></data></array>", kReplyEnd, 169},
    {"XML-RPC reply of structs", readReply, kVXXMLRPCProtocol, kReply,
     "<struct><member><name>n</name><value>", "<int>1</int>", "</value></member></struct>", kReplyEnd, 169},
    {"XML-RPC request", readRequest, kVXXMLRPCProtocol,
     "<methodCall><methodName>m</methodName><params><param><value>", "<array><data><value>", "<int>1</int>",
     "</value></data></array>", "</value></param></params></methodCall>", 169},
    {"SOAP reply", readReply, kVXSOAP2001Protocol, kEnvelope, "<m>", "1", "</m>", kEnvelopeEnd, 510},
    {"SOAP request", readRequest, kVXSOAP1999Protocol, kEnvelope, "<m>", "1", "</m>", kEnvelopeEnd, 510},
    {"SOAP namespaces", readReply, kVXSOAP2001Protocol, kEnvelope, "<m xmlns='urn:x' xmlns:p='urn:y'>", "1",
     "</m>", kEnvelopeEnd, 510},
    {"property list", readList, nullptr, "<plist version='1.0'>", "<array>", "<true/>", "</array>",
     "</plist>", 510},
    {"property list of dictionaries", readList, nullptr, "<plist version='1.0'>", "<dict><key>k</key>",
     "<true/>", "</dict>", "</plist>", 510},
    {"tree", readTree, nullptr, "", "<a>", "text", "</a>", "", 512},
};

bool isUsable(const Value& result) {
  if (result.get() == nullptr) return false;
  return BQGetTypeID(result) != BQDictionaryGetTypeID() || !VXMethodResultIsFault(result);
}

TEST(Limits, DocumentsAreReadToTheirDepth) {
  for (const auto& row : kReaders) {
    SCOPED_TRACE(row.what);
    auto document = [&row](int depth) {
      return blob("<?xml version='1.0'?>" + row.start + repeated(row.each, depth) + row.innermost +
                  repeated(row.eachEnd, depth) + row.end);
    };
    testing::internal::CaptureStderr();
    values::runOnSmallStack([&] {
      Value result = row.read(row.protocol, document(row.limit));
      EXPECT_TRUE(isUsable(result)) << notation(result.get());
      Value again = row.read(row.protocol, document(row.limit));
      EXPECT_TRUE(BQEqual(result, again) || row.read == readTree);
      EXPECT_FALSE(isUsable(row.read(row.protocol, document(row.limit + 1))));
      EXPECT_FALSE(isUsable(row.read(row.protocol, document(kFarBeyond))));
    });
    testing::internal::GetCapturedStderr();
  }
}

/* Each element of the chain refers to the next one. */
Value chainOfReferences(int length) {
  std::string content = "<m><a href='#0'/></m>";
  for (int i = 0; i < length; ++i) {
    std::string number = std::to_string(i), next = std::to_string(i + 1);
    content += "<r id='" + number + "'><x href='#" + next + "'/></r>";
  }
  content += "<r id='" + std::to_string(length) + "'>x</r>";
  return blob(kEnvelope + content + kEnvelopeEnd);
}

TEST(Limits, ReferencesAreFollowedToTheirDepth) {
  values::runOnSmallStack([] {
    EXPECT_TRUE(isUsable(readReply(kVXSOAP2001Protocol, chainOfReferences(510))));
    for (int length : {512, 100'000}) {
      Value result = readReply(kVXSOAP2001Protocol, chainOfReferences(length));
      EXPECT_NE(notation(result.get()).find("Values are nested too deep"), std::string::npos);
    }
  });
}

}  // namespace
