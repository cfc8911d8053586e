#include "transport/WebServiceResult.h"

#include <gtest/gtest.h>

#include "Call.h"

namespace vx {
namespace {

TEST(WebServiceResult, FaultFormsWriteTheirEntries) {
  auto extra = own(BQDataCreate("d\xE9tail", 6));
  struct Row {
    void (*become)(WebServiceResult&, const BQData*);
    const char* expected;
  };
  const Row rows[] = {
      {[](WebServiceResult& result, const BQData*) { result.becomeFault(BQSTR("text"), 7, nullptr, 0); },
       R"({"/kVXResultIsFault": true, "/FaultString": "text", "/FaultCode": 7})"},
      {[](WebServiceResult& result, const BQData* data) {
         result.becomeFault(BQSTR("text"), -1, data, kBQStringEncodingISOLatin1);
       },
       R"({"/kVXResultIsFault": true, "/FaultString": "text", "/FaultCode": -1, "/FaultExtra": "détail"})"},
      {[](WebServiceResult& result, const BQData* data) {
         result.becomeFault(BQSTR("bytes that are no UTF-8"), 0, data, kBQStringEncodingUTF8);
       },
       R"({"/kVXResultIsFault": true, "/FaultString": "bytes that are no UTF-8", "/FaultCode": 0})"},
      {[](WebServiceResult& result, const BQData*) {
         result.becomeFault(BQStreamError{1, 111});
       },
       R"({"/kVXResultIsFault": true, "/FaultString": "/BQStreamFault", "/FaultCode": -65794, )"
       R"("/FaultExtra": {"msg": "Stream Error", "domain": 1, "error": 111}})"},
      {[](WebServiceResult& result, const BQData*) { result.becomeFault(BQSTR("why")); },
       R"({"/kVXResultIsFault": true, "/FaultString": "/BQStreamFault", "/FaultCode": -65794, )"
       R"("/FaultExtra": {"msg": "why", "domain": 2, "error": -65794}})"},
      {[](WebServiceResult& result, const BQData*) {
         result.becomeFault(BQSTR("why"), BQStreamError{-1, -65796});
       },
       R"({"/kVXResultIsFault": true, "/FaultString": "/BQStreamFault", "/FaultCode": -65794, )"
       R"("/FaultExtra": {"msg": "why", "domain": -1, "error": -65796}})"},
      {[](WebServiceResult& result, const BQData*) { result.becomeFault(nullptr); },
       R"({"/kVXResultIsFault": true, "/FaultString": "/BQStreamFault", "/FaultCode": -65794, "/FaultExtra": {}})"},
  };
  for (const Row& row : rows) {
    WebServiceResult result;
    row.become(result, extra.get());
    EXPECT_EQ(textOfObject(result.resultDictionary.get()), row.expected);
    EXPECT_TRUE(VXMethodResultIsFault(result.resultDictionary.get()));
  }
}

TEST(WebServiceResult, LaterFaultReplacesTheEarlierOneAndKeepsTheResult) {
  WebServiceResult result;
  BQDictionarySetValue(result.resultDictionary.get(), kVXMethodInvocationResult, BQSTR("kept"));
  result.becomeFault(BQSTR("first"));
  result.becomeFault(BQSTR("second"), BQStreamError{-1, -65795});
  EXPECT_EQ(failureOf(result.resultDictionary.get()), "second -1 -65795");
  EXPECT_EQ(textOfObject(BQDictionaryGetValue(result.resultDictionary.get(), kVXMethodInvocationResult)),
            "kept");
}

TEST(MethodResult, IsAFaultOnlyByTheTrueObject) {
  int one = 1;
  auto number = own(BQNumberCreate(kBQNumberIntType, &one));
  for (BQTypeRef marker : {BQTypeRef{kBQBooleanTrue}, BQTypeRef{kBQBooleanFalse}, BQTypeRef{number.get()}}) {
    WebServiceResult result;
    BQDictionarySetValue(result.resultDictionary.get(), BQSTR("/kVXResultIsFault"), marker);
    EXPECT_EQ(VXMethodResultIsFault(result.resultDictionary.get()), marker == kBQBooleanTrue);
  }
  EXPECT_FALSE(VXMethodResultIsFault(nullptr));
}

}  // namespace
}  // namespace vx
