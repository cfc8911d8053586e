#include "Server.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <microhttpd.h>

#include <BQ/BQ.h>

#include "DescriptorLimit.h"
#include "Log.h"
#include "Request.h"
#include "SocketAddress.h"

namespace tools::vxserve {
namespace {

/* The room for the headers of a request, and for the pieces in which its body is handed on. */
constexpr size_t kConnectionMemory = size_t{32} << 10;

std::optional<uint64_t> lengthOf(MHD_Connection* connection) {
  const char* text = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_CONTENT_LENGTH);
  if (text == nullptr) return std::nullopt;
  return std::strtoull(text, nullptr, 10);
}

bool expectsContinue(MHD_Connection* connection) {
  return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_EXPECT) != nullptr;
}

Connection* recordOf(MHD_Connection* connection) {
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
  return static_cast<Connection*>(info->socket_context);
}

const sockaddr* peerOf(MHD_Connection* connection) {
  return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr;
}

void releaseDocument(void* document) {
  BQRelease(document);
}

using Response = std::unique_ptr<MHD_Response, decltype(&MHD_destroy_response)>;

/* The bytes of the document are sent from where they are, and released when they were. */
Response makeDocumentResponse(const BQData* document) {
  auto* bytes = const_cast<uint8_t*>(BQDataGetBytePtr(document));
  auto length = static_cast<size_t>(BQDataGetLength(document));
  Response response(MHD_create_response_from_buffer_with_free_callback_cls(length, bytes, releaseDocument,
                                                                           const_cast<BQData*>(document)),
                    MHD_destroy_response);
  MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, "text/xml; charset=utf-8");
  return response;
}

Response makeWordsResponse(std::string_view words, unsigned status) {
  Response response(
      MHD_create_response_from_buffer(words.size(), const_cast<char*>(words.data()), MHD_RESPMEM_PERSISTENT),
      MHD_destroy_response);
  MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, "text/plain; charset=utf-8");
  if (status == MHD_HTTP_METHOD_NOT_ALLOWED) {
    MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ALLOW, MHD_HTTP_METHOD_POST);
  }
  return response;
}

MHD_Result resultOf(bool succeeded) {
  return succeeded ? MHD_YES : MHD_NO;
}

}  // namespace

/* What the HTTP library calls, on its threads. */
struct Callbacks {
  static void connectionChanged(void* server, MHD_Connection* connection, void** record,
                                MHD_ConnectionNotificationCode code) {
    ConnectionWatch& watch = static_cast<Server*>(server)->watch_;
    if (code == MHD_CONNECTION_NOTIFY_STARTED) {
      const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
      *record = watch.add(info->connect_fd);
    } else {
      watch.remove(static_cast<Connection*>(*record));
      *record = nullptr;
    }
  }

  /* Called when the first line of a request is there, which is the first that is heard of it. */
  static void* requestLineArrived(void*, const char*, MHD_Connection* connection) {
    recordOf(connection)->expectRequest();
    return nullptr;
  }

  static MHD_Result requestArrived(void* cls, MHD_Connection* connection, const char* path,
                                   const char* method, const char*, const char* bytes, size_t* length,
                                   void** context) {
    auto& server = *static_cast<Server*>(cls);
    auto* request = static_cast<Request*>(*context);
    if (request == nullptr) {
      request = server.beginRequest(connection, method, path);
      *context = request;
      return resultOf(!request->isRefusedAtOnce() || server.send(*request, connection));
    }
    if (*length == 0) return resultOf(server.finish(*request, connection));
    bool goesOn = request->addBody(bytes, *length);
    *length = 0;
    return resultOf(goesOn);
  }

  static void requestCompleted(void* server, MHD_Connection* connection, void** context,
                               MHD_RequestTerminationCode code) {
    auto* request = static_cast<Request*>(*context);
    *context = nullptr;
    bool wasSent = code == MHD_REQUEST_TERMINATED_COMPLETED_OK;
    if (request != nullptr) static_cast<Server*>(server)->endRequest(connection, request, wasSent);
  }
};

Server::Server(const Options& options, const ListenSocket& socket)
    : maximumBody_(options.maximumBody),
      logs_(options.log),
      connectionLimit_(raiseDescriptorLimit()),
      watch_(std::chrono::seconds(options.deadlineSeconds)),
      held_(connectionLimit_ / 2),
      daemon_(startDaemon(options, socket)) {}

Server::~Server() = default;

void Server::DaemonStop::operator()(MHD_Daemon* daemon) const {
  MHD_stop_daemon(daemon);
}

Server::Daemon Server::startDaemon(const Options& options, const ListenSocket& socket) {
  unsigned threads =
      options.threads != 0 ? options.threads : std::max(1U, std::thread::hardware_concurrency());
  std::vector<MHD_OptionItem> items = {
      {MHD_OPTION_LISTEN_SOCKET, socket.descriptor(), nullptr},
      {MHD_OPTION_CONNECTION_MEMORY_LIMIT, static_cast<intptr_t>(kConnectionMemory), nullptr},
      {MHD_OPTION_CONNECTION_LIMIT, static_cast<intptr_t>(connectionLimit_), nullptr},
      {MHD_OPTION_NOTIFY_CONNECTION, reinterpret_cast<intptr_t>(&Callbacks::connectionChanged), this},
      {MHD_OPTION_URI_LOG_CALLBACK, reinterpret_cast<intptr_t>(&Callbacks::requestLineArrived), this},
      {MHD_OPTION_NOTIFY_COMPLETED, reinterpret_cast<intptr_t>(&Callbacks::requestCompleted), this},
  };
  /* A pool of one is no pool to the library. */
  if (threads > 1) items.push_back({MHD_OPTION_THREAD_POOL_SIZE, static_cast<intptr_t>(threads), nullptr});
  items.push_back({MHD_OPTION_END, 0, nullptr});
  /* Without "turbo" an end of the connection that arrives together with data is not noticed. */
  unsigned flags = MHD_USE_EPOLL_INTERNAL_THREAD | MHD_USE_TURBO | MHD_ALLOW_SUSPEND_RESUME;
  Daemon daemon(MHD_start_daemon(flags, 0, nullptr, nullptr, &Callbacks::requestArrived, this,
                                 MHD_OPTION_ARRAY, items.data(), MHD_OPTION_END));
  if (daemon == nullptr) {
    throw std::runtime_error(std::string("cannot start the server's threads: ") + std::strerror(errno));
  }
  return daemon;
}

void Server::beginStop() {
  isStopping_ = true;
  MHD_quiesce_daemon(daemon_.get());
}

Request* Server::beginRequest(MHD_Connection* connection, const char* method, const char* path) {
  ++requests_;
  Request::Head head = {method, path, lengthOf(connection), expectsContinue(connection)};
  return new Request(head, maximumBody_);
}

void Server::endRequest(MHD_Connection* connection, Request* request, bool wasSent) {
  recordOf(connection)->expectRequest();
  if (logs_) {
    writeLog({textOfAddress(peerOf(connection)), request->protocol(), request->method(),
              request->outcome() + (wasSent ? "" : ",closed"), request->age()});
  }
  delete request;
  --requests_;
}

bool Server::finish(Request& request, MHD_Connection* connection) {
  if (request.isAnswered()) return send(request, connection);
  recordOf(connection)->expectNothing();
  request.answer();
  if (request.delay() > 0 && held_.hold(request, connection, request.delay())) return true;
  return send(request, connection);
}

bool Server::send(Request& request, MHD_Connection* connection) {
  recordOf(connection)->expectReader();
  Response response = request.isDocument() ? makeDocumentResponse(request.takeDocument())
                                           : makeWordsResponse(request.words(), request.status());
  if (isStopping_) MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONNECTION, "close");
  return MHD_queue_response(connection, request.status(), response.get()) == MHD_YES;
}

}  // namespace tools::vxserve
