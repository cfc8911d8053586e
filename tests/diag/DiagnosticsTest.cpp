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
              { a: 1 & <\u000a\u202e }|
            ]|
           - 0x: type kBQXMLNodeTypeElement, name i|
       - 0x: type kBQXMLNodeTypeElement, name e:Fault|
         - 0x: type kBQXMLNodeTypeElement, name faultstring|
           - 0x: type kBQXMLNodeTypeCDATASection, name (8e)\u009b|
           - 0x: type kBQXMLNodeTypeText, name .|
           - 0x: type kBQXMLNodeTypeEntityReference, name LT|
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
XML Parse error occurred: {...}
VX: in _parseReqSOAPEnvelope||
VX: in _parseReqSOAPHeader||
VX: in _parseReqSOAPBody||
#### Parse Post Error: Body missing method
)";

void setVariables(bool isDebugging, bool isVerbose) {
  isDebugging ? setenv("VXDebug", "0", 1) : unsetenv("VXDebug");
  isVerbose ? setenv("VXDebugVerbose", "", 1) : unsetenv("VXDebugVerbose");
}

/* Reads documents in a process with these variables, which are read once. */
[[noreturn]] void readDocuments(bool isDebugging, bool isVerbose) {
  setVariables(isDebugging, isVerbose);
  VXProtocolHandlerRef rpc = VXProtocolHandlerCreate(nullptr, kVXXMLRPCProtocol);
  setVariables(!isDebugging, !isVerbose);
  VXProtocolHandlerRef soap = VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol);
  const std::string open =
                        "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Header/><e:Body>",
                    method = "<m><l type='x:y' a='1 &amp; &lt;&#10;&#x202E;'><i/></l></m>",
                    fault =
                        "<e:Fault><faultstring><![CDATA[\u00e9\u009b]]>\u65e5&LT;</faultstring></e:Fault>",
                    close = "</e:Body></e:Envelope>";
  const std::pair<VXProtocolHandlerRef, std::string> replies[] = {
      {rpc, "<a>" + std::string(50000, 'x') + "</a>"}, {soap, open + method + fault + close}, {rpc, "<"}};
  for (const auto& [handler, document] : replies)
    Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("m"), blob(document)));
  Value::adopt(VXProtocolHandlerCopyRequestDictionary(soap, blob(open + close)));
  _exit(0);
}

/* What such a process prints; sockets of this type keep each write apart. */
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
  for (ssize_t size; (size = recv(ends[1], packet.data(), packet.size(), 0)) > 0; prints += "\n") {
    std::replace(packet.begin(), packet.begin() + size, '\n', '|');
    prints.append(packet.data(), static_cast<size_t>(size));
  }
  close(ends[1]);
  waitpid(child, nullptr, 0);
  const std::pair<std::string, const char*> replacements[] = {
      {"VX \\(" + std::to_string(child) + "\\): ", "VX: "},
      {"\x8e", "(8e)"},
      {"0x[0-9a-f]+", "0x"},
      {"(occurred: \\{)[^}]*", "$1..."}};
  if (size_t start = prints.find("xx"); start != std::string::npos) prints.replace(start, 50000, "50000 x");
  for (const auto& [pattern, replacement] : replacements)
    prints = std::regex_replace(prints, std::regex(pattern), replacement);
  return prints;
}

TEST(Diagnostics, ArePrintedAsTheSwitchesSay) {
  for (auto [isDebugging, isVerbose] :
       {std::pair(false, false), {false, true}, {true, false}, {true, true}}) {
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
