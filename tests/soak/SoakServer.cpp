#include "soak/SoakServer.h"

#include <VX/VX.h>

#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include "support/Values.h"

namespace soak {
namespace {

using support::LoopbackServer;
using support::Value;

/* The reply to a posted document, and the method that it calls. */
struct Answer {
  std::string method = "garbage";
  std::string body;
  bool isFault = false;
};

class Responder {
 public:
  Responder() {
    for (const BQString* protocol : {kVXXMLRPCProtocol, kVXSOAP1999Protocol, kVXSOAP2001Protocol}) {
      handlers_.push_back(Value::adopt(VXProtocolHandlerCreate(nullptr, protocol)));
    }
  }

  Answer answer(size_t protocol, std::string_view document) const {
    auto* handler = handlers_.at(protocol).as<OpaqueVXProtocolHandlerRef>();
    Value request = Value::adopt(VXProtocolHandlerCopyRequestDictionary(handler, support::blob(document)));
    if (request.get() == nullptr) return {};
    Answer result;
    result.method = support::text(BQDictionaryGetValue(request, BQSTR("/VXMethodName")));
    result.isFault = result.method == "fault";
    Value reply;
    if (result.isFault) {
      Value fault =
          support::dictionary({{"/FaultCode", support::integer(7)}, {"/FaultString", support::string("no")}});
      reply = Value::adopt(VXProtocolHandlerCopyFaultDocument(handler, request, fault));
    } else {
      reply = Value::adopt(VXProtocolHandlerCopyReplyDocument(handler, request, firstParameter(request)));
    }
    result.body = support::bytes(reply);
    return result;
  }

 private:
  static BQTypeRef firstParameter(const BQDictionary* request) {
    auto* parameters =
        static_cast<const BQDictionary*>(BQDictionaryGetValue(request, BQSTR("/VXMethodParameters")));
    if (BQDictionaryGetCount(parameters) != 1) return nullptr;
    BQTypeRef key, value;
    BQDictionaryGetKeysAndValues(parameters, &key, &value);
    return value;
  }

  std::vector<Value> handlers_;
};

std::string head(const char* status, const char* type, size_t length) {
  return std::string("HTTP/1.1 ") + status + "\r\nContent-Type: " + type +
         "\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

std::string chunked(const std::string& body) {
  std::string result = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nTransfer-Encoding: chunked\r\n\r\n";
  for (size_t start = 0; start < body.size(); start += 100) {
    std::string chunk = body.substr(start, 100);
    char size[16];
    std::snprintf(size, sizeof size, "%zx\r\n", chunk.size());
    result += size + chunk + "\r\n";
  }
  return result + "0\r\n\r\n";
}

std::string respond(const Answer& answer, size_t protocol) {
  const std::string& body = answer.body;
  const char* status = answer.isFault && protocol != 0 ? "500 Fault" : "200 OK";
  std::string whole = head(status, "text/xml", body.size()) + body;
  if (answer.method == "silent") return {};
  if (answer.method == "garbage") return "nonsense\r\n\r\n";
  if (answer.method == "cut" || answer.method == "reset") whole.resize(whole.size() / 2);
  if (answer.method == "chunked") return chunked(body);
  if (answer.method == "status") return head("503 Busy", "text/xml", body.size()) + body;
  if (answer.method == "image") return head("200 OK", "image/png", body.size()) + body;
  if (answer.method == "broken")
    return head("200 OK", "text/xml", body.size() / 2) + body.substr(0, body.size() / 2);
  return whole;
}

LoopbackServer::Then afterwards(const std::string& method) {
  if (method == "reset") return LoopbackServer::Then::reset;
  for (const char* closing : {"silent", "cut", "close", "garbage"}) {
    if (method == closing) return LoopbackServer::Then::close;
  }
  return LoopbackServer::Then::keep;
}

LoopbackServer::Answerer makeAnswerer() {
  return [responder = std::make_shared<Responder>(), sent = std::string()](std::string_view request) mutable {
    auto protocol = static_cast<size_t>(request[sizeof "POST /" - 1] - '0');
    Answer answer = responder->answer(protocol, request.substr(request.find("\r\n\r\n") + 4));
    sent = respond(answer, protocol);
    return LoopbackServer::Answer{sent, afterwards(answer.method)};
  };
}

}  // namespace

SoakServer::SoakServer() : LoopbackServer(makeAnswerer) {}

std::string SoakServer::url(size_t protocol) const {
  return LoopbackServer::url("/" + std::to_string(protocol));
}

}  // namespace soak
