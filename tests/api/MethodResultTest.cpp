#include <VX/VX.h>
#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "transport/WebServiceResult.h"

namespace {

using namespace support;

std::string resultOf(const vx::WebServiceResult& result) {
  EXPECT_EQ(VXMethodResultIsFault(result.resultDictionary.get()),
            BQDictionaryGetCount(result.resultDictionary.get()) > 0);
  return notation(result.resultDictionary.get());
}

TEST(MethodResult, IsAFaultByTheTrueObjectAlone) {
  EXPECT_TRUE(VXMethodResultIsFault(dictionary({{"/kVXResultIsFault", Value::retain(kBQBooleanTrue)}})));
  for (const Value& marker : {Value(), integer(1), Value::retain(kBQBooleanFalse), string("true")}) {
    EXPECT_FALSE(VXMethodResultIsFault(dictionary({{"/kVXResultIsFault", marker}})))
        << notation(marker.get());
  }
  EXPECT_FALSE(VXMethodResultIsFault(nullptr));
  EXPECT_FALSE(VXMethodResultIsFault(array({})));
}

TEST(MethodResult, TellsWhatFailed) {
  const std::string transport =
      "{/kVXResultIsFault: true, /FaultString: '/BQStreamFault', /FaultCode: -65794";
  vx::WebServiceResult byMessage, byError, byBoth, byStream, ofProtocol, withDetail;
  EXPECT_EQ(resultOf(byMessage), "{}");
  byMessage.becomeFault(BQSTR("Timed Out"));
  EXPECT_EQ(resultOf(byMessage), transport + ", /FaultExtra: {msg: 'Timed Out', domain: 2, error: -65794}}");
  byBoth.becomeFault(BQSTR("Timed Out"), {vx::kDomainLibrary, vx::kErrorTimedOut});
  EXPECT_EQ(resultOf(byBoth), transport + ", /FaultExtra: {msg: 'Timed Out', domain: -1, error: -65796}}");
  byStream.becomeFault(BQStreamError{1, 111});
  EXPECT_EQ(resultOf(byStream), transport + ", /FaultExtra: {msg: 'Stream Error', domain: 1, error: 111}}");
  ofProtocol.becomeFault(BQSTR("No such method"), 7, nullptr, kBQStringEncodingUTF8);
  EXPECT_EQ(resultOf(ofProtocol), "{/kVXResultIsFault: true, /FaultString: 'No such method', /FaultCode: 7}");
  withDetail.becomeFault(BQSTR("s"), 7, blob("\xe9"), kBQStringEncodingISOLatin1);
  EXPECT_EQ(notation(BQDictionaryGetValue(withDetail.resultDictionary.get(), kVXFaultExtra)), "'\u00e9'");
  byError.becomeFault(BQSTR("s"), 7, blob("\xe9"), kBQStringEncodingUTF8);
  EXPECT_EQ(BQDictionaryGetValue(byError.resultDictionary.get(), kVXFaultExtra), nullptr)
      << "detail that is no text";
}

TEST(MethodResult, ALaterFaultReplacesTheEntriesOfAnEarlierOne) {
  vx::WebServiceResult result;
  result.becomeFault(BQSTR("server"), 7, blob("detail"), kBQStringEncodingUTF8);
  result.becomeFault(BQSTR("message"), {INT32_MIN, INT32_MAX});
  EXPECT_EQ(resultOf(result),
            "{/kVXResultIsFault: true, /FaultString: '/BQStreamFault', /FaultCode: -65794, "
            "/FaultExtra: {msg: 'message', domain: -2147483648, error: 2147483647}}");
  result.becomeFault(static_cast<const BQString*>(nullptr));
  EXPECT_EQ(notation(BQDictionaryGetValue(result.resultDictionary.get(), kVXFaultExtra)), "{}")
      << "no message";
}

}  // namespace
