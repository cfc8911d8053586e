/* The memory that hostile documents take: a program of its own, whose allocations are counted. */
#include <VX/VX.h>
#include <gtest/gtest.h>

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

void read(const std::string& reader, const std::string& document) {
  Value data = blob(document);
  if (reader == "plist") return Value::adopt(BQPropertyListCreateFromXMLData(data, nullptr)), void();
  Value handler = Value::adopt(
      VXProtocolHandlerCreate(nullptr, reader == "rpc" ? kVXXMLRPCProtocol : kVXSOAP2001Protocol));
  Value::adopt(
      VXProtocolHandlerCopyReplyDictionary(handler.as<OpaqueVXProtocolHandlerRef>(), BQSTR("m"), data));
}

/*
 * READER | BEFORE | PART | AFTER: the part is repeated; "%" in it is a new name each time. Every document is
 * read by the plain reader and, with a comment before it, by the other one.
 */
TEST(DocumentMemory, IsAtMostSixteenTimesTheDocument) {
  const std::string soap =
      "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/' "
      "xmlns:c='http://schemas.xmlsoap.org/soap/encoding/'><e:Body><m>";
  const std::string soapEnd = "</m></e:Body></e:Envelope>", rpc = "<methodResponse><params><param><value>",
                    rpcEnd = "</value></param></params></methodResponse>";
  const struct {
    std::string reader, before, part, after;
  } rows[] = {
      {"rpc", rpc, "&a;", rpcEnd},
      {"rpc", rpc, "x&%;", rpcEnd},
      {"rpc", rpc + "<array><data>", "<value><array><data/></array></value>", "</data></array>" + rpcEnd},
      {"rpc", rpc + "<array><data>", "<value><struct/></value>", "</data></array>" + rpcEnd},
      {"rpc", rpc + "<struct>", "<member><name>%</name><value/></member>", "</struct>" + rpcEnd},
      {"soap", soap, "<%/>", soapEnd},
      {"soap", soap, "<%>x</%><a/>", soapEnd},
      {"soap", soap, "%<a/>", soapEnd},
      {"soap", soap + "<r>", "<a>x</a>", "</r>" + soapEnd},
      {"soap", soap + "<r>", "<s><a/><a/></s>", "</r>" + soapEnd},
      {"soap", soap + "<r>", "<s><a/><b/><c/><d/><e/><f/><g/><h/><i/></s>", "</r>" + soapEnd},
      {"soap", soap + "<r c:arrayType='x'>", "x<a/>", "</r>" + soapEnd},
      {"soap", soap, "<a b='%'/>", soapEnd},
      {"soap", soap, "<% %=''/>", soapEnd},
      {"soap", soap, "<a xmlns:%='u'/>", soapEnd},
      {"soap", soap + "<a", " %=''", "/>" + soapEnd},
      {"plist", "<plist><array>", "<dict/>", "</array></plist>"},
      {"plist", "<plist><dict>", "<key>%</key><true/>", "</dict></plist>"},
  };
  constexpr size_t kSize = 1 << 20, kBesides = 2 << 20;
  for (const auto& row : rows) {
    for (std::string document : {"", "<!-- -->"}) {
      document += row.before;
      for (size_t number = 0; document.size() < kSize; ++number) {
        for (char character : row.part)
          document += character == '%' ? nameOf(number) : std::string(1, character);
      }
      document += row.after;
      const bench::AllocationMeter meter;
      read(row.reader, document);
      EXPECT_GT(meter.peak(), 0);
      EXPECT_LT(static_cast<size_t>(meter.peak()), 16 * document.size() + kBesides) << row.before << row.part;
    }
  }
}

}  // namespace
