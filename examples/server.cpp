/*
 * An XML-RPC server on 127.0.0.1 with add(int, int) and echo(value). "example_server 8080" prints its port
 * (0: a free one) and serves until its input ends. c++ -std=c++20 server.cpp -lvx -lbq -lmicrohttpd makes it.
 */
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string_view>

#include <microhttpd.h>
#include <netinet/in.h>

#include <VX/VX.h>

/* A parameter of a request. In XML-RPC they have no names of their own, but an order. */
static BQTypeRef parameterAt(const BQDictionary* request, BQIndex index) {
  auto* values = static_cast<const BQDictionary*>(BQDictionaryGetValue(request, kVXRequestParameters));
  auto* order = static_cast<const BQArray*>(BQDictionaryGetValue(request, kVXRequestParameterOrder));
  return BQDictionaryGetValue(values, BQArrayGetValueAtIndex(order, index));
}

/* A method gives its result, owned by the caller, or null if its parameters are wrong. */
static BQTypeRef add(const BQDictionary* request) {
  int32_t sum = 0, number = 0;
  for (BQIndex i = 0; i < 2; ++i) {
    auto* parameter = static_cast<const BQNumber*>(parameterAt(request, i));
    bool isInt = BQNumberGetValue(parameter, kBQNumberSInt32Type, &number);
    if (!isInt || __builtin_add_overflow(sum, number, &sum)) return nullptr;
  }
  return BQNumberCreate(kBQNumberSInt32Type, &sum);
}

static BQTypeRef echo(const BQDictionary* request) {
  return BQRetain(parameterAt(request, 0));
}

using Method = BQTypeRef (*)(const BQDictionary*);
static const std::map<std::string_view, Method> kMethods = {{"add", add}, {"echo", echo}};

/* The answer to any bytes, owned by the caller: a reply, or a fault. */
static const BQData* copyAnswer(const BQData* body) {
  /* A handler is for one thread at a time, so each thread has its own. */
  thread_local auto handler = BQAdopt(VXProtocolHandlerCreate(nullptr, kVXXMLRPCProtocol));
  auto request = BQAdopt(VXProtocolHandlerCopyRequestDictionary(handler.get(), body));
  auto* name = static_cast<const BQString*>(BQDictionaryGetValue(request.get(), kVXRequestMethodName));
  auto method = kMethods.find(name == nullptr ? "" : BQStringGetUTF8Ptr(name));
  auto result = BQAdopt(method == kMethods.end() ? nullptr : method->second(request.get()));
  if (result) return VXProtocolHandlerCopyReplyDocument(handler.get(), request.get(), result.get());
  BQTypeRef key = kVXFaultString, text = BQSTR("no such method, or wrong parameters");
  auto fault = BQAdopt(BQDictionaryCreate(&key, &text, 1));
  return VXProtocolHandlerCopyFaultDocument(handler.get(), request.get(), fault.get());
}

/* Called with the headers of a request, with each part of its body, and when all is there. */
static MHD_Result handle(void*, MHD_Connection* connection, const char*, const char*, const char*,
                         const char* bytes, size_t* length, void** context) {
  bool isNew = *context == nullptr;
  if (isNew) *context = BQDataCreateMutable(0);
  auto* body = static_cast<BQData*>(*context);
  BQDataAppendBytes(body, bytes, static_cast<BQIndex>(*length));
  if (isNew || *length > 0) {
    *length = 0;
    return BQDataGetLength(body) <= 1 << 20 ? MHD_YES : MHD_NO;
  }
  auto answer = BQAdopt(copyAnswer(body));
  auto* answerBytes = const_cast<uint8_t*>(BQDataGetBytePtr(answer.get()));
  auto answerLength = static_cast<size_t>(BQDataGetLength(answer.get()));
  using Response = std::unique_ptr<MHD_Response, decltype(&MHD_destroy_response)>;
  Response response(MHD_create_response_from_buffer(answerLength, answerBytes, MHD_RESPMEM_MUST_COPY),
                    MHD_destroy_response);
  MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, "text/xml; charset=utf-8");
  return MHD_queue_response(connection, MHD_HTTP_OK, response.get());
}

int main(int argc, char** argv) {
  auto port = static_cast<uint16_t>(argc == 2 ? std::atoi(argv[1]) : 0);
  sockaddr_in address = {AF_INET, htons(port), {htonl(INADDR_LOOPBACK)}, {}};
  auto forget =
      +[](void*, MHD_Connection*, void** context, MHD_RequestTerminationCode) { BQRelease(*context); };
  auto* daemon = MHD_start_daemon(MHD_USE_EPOLL_INTERNAL_THREAD, 0, nullptr, nullptr, handle, nullptr,
                                  MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_THREAD_POOL_SIZE, 2U,
                                  MHD_OPTION_NOTIFY_COMPLETED, forget, nullptr, MHD_OPTION_END);
  if (argc != 2 || daemon == nullptr) {
    std::fprintf(stderr, "usage: %s PORT, one that is free\n", argv[0]);
    return 2;
  }
  std::printf("%d\n", MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)->port);
  std::fflush(stdout);
  while (std::getchar() != EOF) continue;
  MHD_stop_daemon(daemon);
}
