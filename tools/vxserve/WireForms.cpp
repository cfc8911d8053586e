#include "WireForms.h"

#include <charconv>
#include <cmath>
#include <string>

#include <BQ/BQ.h>
#include <VX/VXDate.h>

namespace tools::vxserve {
namespace {

const BQString* createString(const std::string& text) {
  return BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size()));
}

/* The shortest text that reads as the same number; without an exponent, which XML-RPC has none of, if short.
 */
std::string digitsOf(double number) {
  constexpr double kLargestPlain = 1e17;
  constexpr double kSmallestPlain = 1e-7;
  double size = std::fabs(number);
  bool isPlain = size == 0 || (size >= kSmallestPlain && size < kLargestPlain);
  char text[64];
  auto format = isPlain ? std::chars_format::fixed : std::chars_format::scientific;
  return {text, std::to_chars(text, text + sizeof text, number, format).ptr};
}

bool isDouble(BQTypeRef value) {
  return BQNumberIsFloatType(static_cast<const BQNumber*>(value));
}

double doubleOf(BQTypeRef value) {
  double number = 0;
  BQNumberGetValue(static_cast<const BQNumber*>(value), kBQNumberDoubleType, &number);
  return number;
}

/* The names that XML Schema has for what is no number. */
std::string schemaTextOf(double number) {
  if (std::isnan(number)) return "NaN";
  if (std::isinf(number)) return number < 0 ? "-INF" : "INF";
  return digitsOf(number);
}

const BQString* writeXMLRPCNumber(VXMethodInvocationRef, BQTypeRef value, void*) {
  if (!isDouble(value)) return nullptr;
  return createString("<double>" + digitsOf(doubleOf(value)) + "</double>");
}

const BQString* writeXMLRPCDate(VXMethodInvocationRef, BQTypeRef value, void*) {
  char text[64];
  int length = vxBQDateToISO8601String(text, sizeof text, static_cast<const BQDate*>(value), 1);
  if (length <= 0 || length >= static_cast<int>(sizeof text)) return nullptr;
  std::string date(text, static_cast<size_t>(length));
  if (date.back() == 'Z') date.pop_back();
  return createString("<dateTime.iso8601>" + date + "</dateTime.iso8601>");
}

/* An empty value of a struct arrives as null, and means an empty string. */
const BQString* writeXMLRPCNull(VXMethodInvocationRef, BQTypeRef, void*) {
  return BQSTR("<string></string>");
}

const BQString* writeSOAPNumber(VXMethodInvocationRef, BQTypeRef value, void*) {
  if (!isDouble(value)) return nullptr;
  return createString("<%@ xsi:type=\"xsd:double\">" + schemaTextOf(doubleOf(value)) + "</%@>");
}

/* The attributes that the two generations of XML Schema have for it. */
const BQString* writeNilOf2001(VXMethodInvocationRef, BQTypeRef, void*) {
  return BQSTR("<%@ xsi:nil=\"true\"/>");
}

const BQString* writeNilOf1999(VXMethodInvocationRef, BQTypeRef, void*) {
  return BQSTR("<%@ xsi:null=\"1\"/>");
}

}  // namespace

void setXMLRPCForms(VXProtocolHandlerRef handler) {
  VXProtocolHandlerSetSerializationOverride(handler, BQNumberGetTypeID(), writeXMLRPCNumber, nullptr);
  VXProtocolHandlerSetSerializationOverride(handler, BQDateGetTypeID(), writeXMLRPCDate, nullptr);
  VXProtocolHandlerSetSerializationOverride(handler, BQNullGetTypeID(), writeXMLRPCNull, nullptr);
}

void setSOAPForms(VXProtocolHandlerRef handler, bool isOf1999) {
  VXSerializeOverrideFunc writeNil = isOf1999 ? writeNilOf1999 : writeNilOf2001;
  VXProtocolHandlerSetSerializationOverride(handler, BQNullGetTypeID(), writeNil, nullptr);
  VXProtocolHandlerSetSerializationOverride(handler, BQNumberGetTypeID(), writeSOAPNumber, nullptr);
}

}  // namespace tools::vxserve
