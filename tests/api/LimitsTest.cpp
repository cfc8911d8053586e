/*
 * What is nested is bounded, on both sides of each limit, and needs little stack on either: everything
 * here runs on a thread with a stack of 256 KiB.
 */
#include <VX/VX.h>
#include <gtest/gtest.h>

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

BQRef<OpaqueVXProtocolHandlerRef> handlerOf(const BQString* protocol) {
  return BQAdopt(VXProtocolHandlerCreate(nullptr, protocol));
}

/* Written out, a container that holds itself twice would double at each level. */
TEST(Limits, ValuesAreWrittenToTheirDepth) {
  Value list = array({}), members = dictionary({}), far = nested(kFarBeyond);
  for (int i = 0; i < 50; ++i) {
    BQArrayAppendValue(list.as<BQArray>(), list);
    BQDictionarySetValue(members.as<BQDictionary>(), string(std::to_string(i)), members);
  }
  const Value request = dictionary({{"/VXMethodName", string("m")}});
  /* The writer of property lists, which is meant by null, counts elements. */
  for (const BQString* protocol : {kProtocols[0], kProtocols[1], kProtocols[2], {}}) {
    const int limit = protocol != nullptr ? 512 : 510;
    Value fits = nested(limit), beside = array({nested(limit - 1), nested(limit - 1)}),
          tooDeep = nested(limit + 1);
    values::runOnSmallStack([&] {
      for (const Value* value : {&fits, &beside, &tooDeep, &far, &list, &members}) {
        Value document =
            Value::adopt(protocol == nullptr ? BQPropertyListCreateXMLData(*value)
                                             : VXProtocolHandlerCopyReplyDocument(handlerOf(protocol).get(),
                                                                                  request, value->get()));
        EXPECT_EQ(document.get() != nullptr, value == &fits || value == &beside) << limit;
      }
    });
  }
  BQArrayRemoveAllValues(list.as<BQArray>());
  BQDictionaryRemoveAllValues(members.as<BQDictionary>());
}

/* A parsed document that outlives its reading, and is printed. */
BQTypeRef readTree(const Value& document) {
  const BQTree* tree = BQXMLTreeCreateFromDataWithError(document, nullptr);
  if (tree != nullptr) vx::dumpXMLTree(tree, 0);
  return tree;
}

BQTypeRef readReply(const Value& document) {
  bool isSOAP = bytes(document).find("Envelope") != std::string::npos;
  return VXProtocolHandlerCopyReplyDictionary(
      handlerOf(isSOAP ? kVXSOAP2001Protocol : kVXXMLRPCProtocol).get(), BQSTR("m"), document);
}

const std::string kEnvelope = "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body>",
                  kEnvelopeEnd = "</e:Body></e:Envelope>";

/* Documents of as many parts around each other as 512 elements allow. */
const struct {
  int limit;
  BQTypeRef (*read)(const Value& document);
  std::string start, each, innermost, eachEnd, end;
} kReaders[] = {
    {84, readReply, "<methodResponse><params><param><value>",
     "<array><data><value><struct><member><name>n</name><value>", "<int>1</int>",
     "</value></member></struct></value></data></array>", "</value></param></params></methodResponse>"},
    {510, readReply, kEnvelope, "<m xmlns='urn:x' xmlns:p='urn:y'>", "1", "</m>", kEnvelopeEnd},
    {510,
     [](const Value& document) -> BQTypeRef {
       return VXProtocolHandlerCopyRequestDictionary(handlerOf(kVXSOAP1999Protocol).get(), document);
     },
     kEnvelope, "<m>", "1", "</m>", kEnvelopeEnd},
    {255, [](const Value& document) { return BQPropertyListCreateFromXMLData(document, nullptr); },
     "<plist version='1.0'>", "<array><dict><key>k</key>", "<true/>", "</dict></array>", "</plist>"},
    {512, readTree, "", "<a>", "text", "</a>", ""},
};

bool isUsable(const Value& result) {
  return result.get() != nullptr &&
         (BQGetTypeID(result) != BQDictionaryGetTypeID() || !VXMethodResultIsFault(result));
}

TEST(Limits, DocumentsAreReadToTheirDepth) {
  for (const auto& [limit, read, start, each, innermost, eachEnd, end] : kReaders) {
    testing::internal::CaptureStderr();
    for (int depth : {limit, limit + 1, kFarBeyond}) {
      Value document = blob("<?xml version='1.0'?>" + start + repeated(each, depth) + innermost +
                            repeated(eachEnd, depth) + end);
      values::runOnSmallStack([&, read = read, isRead = depth == limit] {
        EXPECT_EQ(isUsable(Value::adopt(read(document))), isRead) << start << depth;
      });
    }
    testing::internal::GetCapturedStderr();
  }
}

/* Each element of the chain refers to the next one. */
TEST(Limits, ReferencesAreFollowedToTheirDepth) {
  for (int length : {510, 512, 100'000}) {
    std::string content = "<m><a href='#0'/></m>";
    for (int i = 0; i <= length; ++i) {
      std::string next = i == length ? "x" : "<x href='#" + std::to_string(i + 1) + "'/>";
      content += "<r id='" + std::to_string(i) + "'>" + next + "</r>";
    }
    values::runOnSmallStack([&] {
      Value result = Value::adopt(readReply(blob(kEnvelope + content + kEnvelopeEnd)));
      bool isTooDeep = notation(result.get()).find("Values are nested too deep") != std::string::npos;
      EXPECT_TRUE(isUsable(result) == (length == 510) && isTooDeep == (length != 510)) << length;
    });
  }
}

}  // namespace
