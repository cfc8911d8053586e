/* The memory that hostile documents take: a program of its own, whose allocations are counted. */
#include <VX/VX.h>
#include <gtest/gtest.h>

#include <regex>

#include "../../bench/AllocationMeter.h"
#include "support/Values.h"

namespace {

using namespace support;

/* Four characters that differ for each number up to some millions. */
std::string nameOf(size_t number) {
  std::string name;
  for (size_t i = 0; i < 4; ++i, number /= 26) name += static_cast<char>('a' + number % 26);
  return name;
}

/* The part many times after the start, each time with a new name for "%", and then the end of each element.
 */
std::string documentOf(std::string document, const std::string& start, const std::string& part) {
  document += start;
  for (size_t number = 0; document.size() < 1 << 20; ++number)
    for (char character : part) document += character == '%' ? nameOf(number) : std::string(1, character);
  const std::regex tag("<([\\w:]+)[^>]*>");
  std::string ends;
  for (std::sregex_iterator each(start.begin(), start.end(), tag), end; each != end; ++each)
    ends.insert(0, "</" + each->str(1) + ">");
  return document + (start.ends_with('>') ? "" : "/>") + ends;
}

TEST(DocumentMemory, IsAtMostSixteenTimesTheDocument) {
  const std::string soap =
      "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/' "
      "xmlns:c='http://schemas.xmlsoap.org/soap/encoding/'><e:Body><m>";
  const std::string rpc = "<methodResponse><params><param><value>";
  const std::pair<std::string, std::vector<const char*>> rows[] = {
      {rpc, {"&a;", "x&%;"}},
      {rpc + "<array><data>", {"<value><array><data/></array></value>", "<value><struct/></value>"}},
      {rpc + "<struct>", {"<member><name>%</name><value/></member>"}},
      {soap, {"<%/>", "<%>x</%><a/>", "%<a/>", "<a b='%'/>", "<% %=''/>", "<a xmlns:%='u'/>"}},
      {soap + "<r>", {"<a>x</a>", "<s><a/><a/></s>", "<s><a/><b/><c/><d/><e/><f/><g/><h/><i/></s>"}},
      {soap + "<r c:arrayType='x'>", {"x<a/>"}},
      {soap + "<a", {" %=''"}},
      {"<plist><array>", {"<dict/>"}},
      {"<plist><dict>", {"<key>%</key><true/>"}},
  };
  for (const auto& [start, parts] : rows) {
    for (const std::string part : parts) {
      for (const char* comment : {"", "<!-- -->"}) { /* after which the plain reader leaves a document */
        Value data = blob(documentOf(comment, start, part));
        const bench::AllocationMeter meter;
        Value::adopt(BQPropertyListCreateFromXMLData(data, nullptr));
        for (const BQString* protocol : {kVXXMLRPCProtocol, kVXSOAP2001Protocol}) {
          Value handler = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol));
          Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler.as<OpaqueVXProtocolHandlerRef>(),
                                                            BQSTR("m"), data));
        }
        EXPECT_GT(meter.peak(), 0);
        EXPECT_LT(meter.peak(), 16 * BQDataGetLength(data) + (2 << 20)) << start << part;
      }
    }
  }
}

}  // namespace
