#include <VX/VX.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <sstream>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "diag/BodyText.h"
#include "support/Values.h"

namespace {

using namespace support;
using namespace std::string_literals;

/* What is printed with both switches on. Each line is a write, with "|" in place of its line feeds. */
const std::string kPrints = R"(XMLRPCWebServiceMethodInvocation::parseReply: reply tree|
   - 0x: type kBQXMLNodeTypeElement, name a|
     - 0x: type kBQXMLNodeTypeText, name 50000 x|
     - 0x: type kBQXMLNodeTypeElement, name methodResponse|
VX: findNamedElement: Ignoring type 6||
   - 0x: type kBQXMLNodeTypeElement, name e:Envelope|
      [ -- 1 ATTRIBUTES --|
        { xmlns:e: http://schemas.xmlsoap.org/soap/envelope/ }|
      ]|
     - 0x: type kBQXMLNodeTypeElement, name e:Header|
     - 0x: type kBQXMLNodeTypeElement, name e:Body|
       - 0x: type kBQXMLNodeTypeElement, name m|
         - 0x: type kBQXMLNodeTypeElement, name l|
            [ -- 2 ATTRIBUTES --|
              { type: x:y }|
              { a: 1 & <\u000a }|
            ]|
           - 0x: type kBQXMLNodeTypeElement, name i|
       - 0x: type kBQXMLNodeTypeElement, name e:Fault|
         - 0x: type kBQXMLNodeTypeElement, name faultstring|
           - 0x: type kBQXMLNodeTypeCDATASection, name (8e)\u000a\u007f\u009b\u202e|
           - 0x: type kBQXMLNodeTypeText, name .|
           - 0x: type kBQXMLNodeTypeEntityReference, name LT|
           - 0x: type kBQXMLNodeTypeElement, name b|
VX: in _parseSOAPEnvelope||
VX: in _parseSOAPHeader||
VX: in _parseSOAPBody||
VX: in _parseMethodReply||
####: NOTE: couldn't short circuit for x:y
VX: parseSOAPType: got a type: x:y|
VX: strange node in the middle of a string: 2||
VX: in parseSOAPDictionary||
VX: in _parseFault||
VX: unknown escape entity reference: LT|
VX: strange node in the middle of a string: 2||
VX: in _parseReqSOAPEnvelope||
VX: in _parseReqSOAPHeader||
VX: in _parseReqSOAPBody||
#### Parse Post Error: Body missing method
XML Parse error occurred: {...}
)";

void setVariables(bool isDebugging, bool isVerbose) {
  isDebugging ? setenv("VXDebug", "0", 1) : unsetenv("VXDebug");
  isVerbose ? setenv("VXDebugVerbose", "", 1) : unsetenv("VXDebugVerbose");
}

/* Reads documents in a process with these variables, which are looked at once. */
[[noreturn]] void readDocuments(bool isDebugging, bool isVerbose) {
  setVariables(isDebugging, isVerbose);
  VXProtocolHandlerRef rpc = VXProtocolHandlerCreate(nullptr, kVXXMLRPCProtocol);
  setVariables(!isDebugging, !isVerbose);
  VXProtocolHandlerRef soap = VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol);
  const std::string open =
                        "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Header/><e:Body>",
                    close = "</e:Body></e:Envelope>";
  auto read = [](VXProtocolHandlerRef handler, const std::string& document) {
    Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("m"), blob(document)));
  };
  read(rpc, "<a>" + std::string(50000, 'x') + "<methodResponse/></a>");
  read(soap, open +
                 "<m><l type='x:y' a='1 &amp; &lt;&#10;'><i/></l></m><e:Fault><faultstring>"
                 "<![CDATA[\u00e9\n\x7f\u009b\u202e]]>\u65e5&LT;<b/></faultstring></e:Fault>" +
                 close);
  Value::adopt(VXProtocolHandlerCopyRequestDictionary(soap, blob(open + close)));
  read(rpc, "<");
  _exit(0);
}

/* What such a process prints. */
std::string printsOf(bool isDebugging, bool isVerbose) {
  int ends[2];
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
  pid_t child = fork();
  if (child == 0) {
    dup2(ends[0], STDERR_FILENO);
    readDocuments(isDebugging, isVerbose);
  }
  close(ends[0]);
  std::string prints;
  std::vector<char> packet(60000);
  for (ssize_t size; (size = recv(ends[1], packet.data(), packet.size(), 0)) > 0;) {
    std::string print(packet.data(), static_cast<size_t>(size));
    if (print.size() > 50000) print.replace(print.find("xx"), 50000, "50000 x");
    if (print.starts_with("XML Parse error occurred: {")) print.replace(27, print.size() - 28, "...");
    std::replace(print.begin(), print.end(), '\n', '|');
    prints += print + "\n";
  }
  close(ends[1]);
  waitpid(child, nullptr, 0);
  prints = std::regex_replace(prints, std::regex("VX \\(" + std::to_string(child) + "\\): "), "VX: ");
  prints = std::regex_replace(prints, std::regex("\x8e"), "(8e)");
  return std::regex_replace(prints, std::regex("0x[0-9a-f]+"), "0x");
}

TEST(Diagnostics, ArePrintedAsTheSwitchesSay) {
  for (bool isDebugging : {false, true}) {
    for (bool isVerbose : {false, true}) {
      std::istringstream lines(kPrints);
      std::string expected;
      for (std::string line; std::getline(lines, line);) {
        bool needsDebug = line.starts_with("VX: ") || line.starts_with("###");
        bool needsVerbose = !line.starts_with("###") && !line.starts_with("XML Parse");
        if ((isDebugging || !needsDebug) && (isVerbose || !needsVerbose)) expected += line + "\n";
      }
      EXPECT_EQ(printsOf(isDebugging, isVerbose), expected) << isDebugging << isVerbose;
    }
  }
}

TEST(BodyText, IsReadableWhateverTheBytes) {
  const std::tuple<std::string, unsigned long, std::string> rows[] = {
      {"<a>\r\n</a>\r", kBQStringEncodingUTF8, "<a>\n\n</a>\n"},
      {"\xc3\xa9\xe2\x82\xac", kBQStringEncodingUTF8, "\u00e9\u20ac"},
      {"caf\xe9", kBQStringEncodingUTF8, "caf\u00e9"}, /* what it cannot be is ISO Latin-1 */
      {"caf\xe9", 0x7777, "caf\u00e9"},
      {"\0a\0b"s, kBQStringEncodingUTF16BE, "ab"},
  };
  for (const auto& [body, encoding, shown] : rows)
    EXPECT_EQ(text(Value::adopt(vx::prettyPrintXML(blob(body), encoding)).get()), shown);
}

}  // namespace
