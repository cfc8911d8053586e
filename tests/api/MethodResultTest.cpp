#include <VX/VX.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "support/Values.h"
#include "transport/WebServiceResult.h"

namespace {

using namespace support;
using vx::WebServiceResult;

TEST(MethodResult, IsAFaultByTheTrueObjectAlone) {
  for (const Value& marker :
       {Value(), integer(1), Value::retain(kBQBooleanTrue), Value::retain(kBQBooleanFalse), string("true")}) {
    EXPECT_EQ(VXMethodResultIsFault(dictionary({{"/kVXResultIsFault", marker}})),
              marker.get() == kBQBooleanTrue)
        << notation(marker.get());
  }
}

TEST(MethodResult, TellsHowTheCallEnded) {
  auto transportFault = [](int32_t domain, int32_t error) {
    WebServiceResult result;
    result.becomeFault(BQSTR("why"), BQStreamError{domain, error});
    return Value::retain(result.resultDictionary.get());
  };
  WebServiceResult value, server, unsent;
  value.addNumberToResult(kVXMethodInvocationResult, 1);
  server.becomeFault(BQSTR("No"), kVXErrorTimedOut, blob("detail"), kBQStringEncodingUTF8);
  unsent.becomeFault(BQSTR("Missing host in URL"));
  const std::pair<Value, VXResultOutcome> rows[] = {
      {Value(), kVXResultOutcomeNone},
      {string("no dictionary"), kVXResultOutcomeNone},
      {dictionary({}), kVXResultOutcomeValue},
      {Value::retain(value.resultDictionary.get()), kVXResultOutcomeValue},
      {Value::retain(server.resultDictionary.get()), kVXResultOutcomeServerFault},
      {Value::retain(unsent.resultDictionary.get()), kVXResultOutcomeNotSent},
      {transportFault(kVXErrorDomainReply, kVXErrorTimedOut), kVXResultOutcomeTimedOut},
      {transportFault(kVXErrorDomainReply, kVXErrorUnusableReply), kVXResultOutcomeUnusableReply},
      {transportFault(kBQStreamErrorDomainPOSIX, ECONNREFUSED), kVXResultOutcomeTransport},
      {transportFault(kBQStreamErrorDomainPOSIX, kVXErrorTimedOut), kVXResultOutcomeTransport},
      {transportFault(kVXErrorDomainRequest, ECONNREFUSED), kVXResultOutcomeTransport},
  };
  for (const auto& [result, outcome] : rows) {
    EXPECT_EQ(VXMethodResultGetOutcome(result), outcome) << notation(result.get());
  }
}

TEST(MethodResult, TellsWhatFailed) {
  const std::string fault = "{/kVXResultIsFault: true, ";
  const std::string transport = fault + "/FaultString: '/BQStreamFault', /FaultCode: -65794, /FaultExtra: {";
  const std::pair<void (*)(WebServiceResult&), std::string> rows[] = {
      {[](WebServiceResult& result) { result.becomeFault(BQSTR("Timed Out")); },
       transport + "msg: 'Timed Out', domain: 2, error: -65794}}"},
      {[](WebServiceResult& result) {
         result.becomeFault(BQSTR("Timed Out"), {INT32_MIN, INT32_MAX});
       },
       transport + "msg: 'Timed Out', domain: -2147483648, error: 2147483647}}"},
      {[](WebServiceResult& result) {
         result.becomeFault(BQStreamError{1, 111});
       },
       transport + "msg: 'Stream Error', domain: 1, error: 111}}"},
      {[](WebServiceResult& result) { result.becomeFault(static_cast<const BQString*>(nullptr)); },
       transport + "}}"},
      {[](WebServiceResult& result) { result.becomeFault(BQSTR("No"), -1, nullptr, 0); },
       fault + "/FaultString: 'No', /FaultCode: -1}"},
      {[](WebServiceResult& result) {
         result.becomeFault(BQSTR("No"), 7, blob("d\xE9tail"), kBQStringEncodingISOLatin1);
       },
       fault + "/FaultString: 'No', /FaultCode: 7, /FaultExtra: 'd\u00e9tail'}"},
      {[](WebServiceResult& result) {
         result.becomeFault(BQSTR("No"), 7, blob("d\xE9tail"), kBQStringEncodingUTF8);
       },
       fault + "/FaultString: 'No', /FaultCode: 7}"},
  };
  for (const auto& [become, expected] : rows) {
    WebServiceResult result;
    become(result);
    EXPECT_EQ(notation(result.resultDictionary.get()), expected);
  }
}

TEST(MethodResult, ALaterFaultReplacesTheEarlierOneAndKeepsTheResult) {
  WebServiceResult result;
  BQDictionarySetValue(result.resultDictionary.get(), kVXMethodInvocationResult, BQSTR("kept"));
  result.becomeFault(BQSTR("server"), 7, blob("detail"), kBQStringEncodingUTF8);
  result.becomeFault(BQSTR("why"));
  EXPECT_EQ(notation(result.resultDictionary.get()),
            "{/Result: 'kept', /kVXResultIsFault: true, /FaultString: '/BQStreamFault', /FaultCode: -65794, "
            "/FaultExtra: {msg: 'why', domain: 2, error: -65794}}");
}

}  // namespace
