/*
 * Drives the transfers of one thread on its run loop. All of them share the thread's connections, whatever
 * modes they run in.
 */
#ifndef BQ_HTTP_TRANSFER_ENGINE_H
#define BQ_HTTP_TRANSFER_ENGINE_H

#include <sys/epoll.h>

#include <list>
#include <memory>
#include <vector>

#include <BQ/BQRunLoop.h>

#include <curl/curl.h>

#include "platform/http/Transfer.h"
#include "platform/object/Object.h"

namespace bq {

class TransferEngine {
 public:
  /* The calling thread's engine; null if the system refuses it or the thread is ending. */
  static TransferEngine* current();

  TransferEngine();
  ~TransferEngine();
  TransferEngine(const TransferEngine&) = delete;
  TransferEngine& operator=(const TransferEngine&) = delete;

  /*
   * Called before a stream is worked on. After a fork, the child's thread still has the parent's engine. The
   * child marks its streams as lost and keeps the engine without using it: freeing it would end connections
   * that the parent still uses.
   */
  static void enterProcess();
  void abandon();

  /*
   * Starts a transfer and takes it as far as it goes without waiting. The engine owns it until it is given
   * back with release(). Null if there is no memory for it.
   */
  Transfer* start(Ref<BQHTTPMessage> request, const TransferOptions& options, TransferObserver observer);
  void release(Transfer* transfer);

  /* Transfers proceed while the run loop runs in a mode that was retained more often than released. */
  void retainMode(const BQString* mode);
  void releaseMode(const BQString* mode);

  /* For the transfers. One that is added waits in order until a connection is allowed. */
  void add(Transfer& transfer);
  void remove(Transfer& transfer);
  /*
   * Whether libcurl has said which connection the transfer uses. It does so at the end of the step that sends
   * the request, but not if the transfer is paused by then: the connection would be taken for an idle one.
   */
  bool knowsConnectionOf(const Transfer& transfer) { return socketAt(transfer.socket).owner == &transfer; }
  static curl_socket_t onOpenSocket(void* transfer, curlsocktype, curl_sockaddr* address);
  static int onCloseSocket(void* engine, curl_socket_t socket);

 private:
  struct Mode {
    Ref<const BQString> name;
    int users;
  };
  struct Socket {
    /* The events that the epoll instance reports. */
    uint32_t registered = 0;
    bool isConnection = false;
    /* The transfer that uses it; null while a connection is idle. */
    Transfer* owner = nullptr;
  };
  struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
  };

  static int onSocket(CURL* handle, curl_socket_t socket, int what, void* engine, void*);
  static int onTimer(CURLM*, long milliseconds, void* engine);
  static void onReady(BQFileDescriptor*, uint32_t, void* engine);
  static void onDeadline(BQRunLoopTimer*, void* engine);

  bool isUsable() const { return multi_ != nullptr && epoll_ >= 0; }
  void loseTransfers();
  void adjustLimit();
  void startWaiting();
  int poll(epoll_event* events);
  void discardUnread();
  void serve(int socket, uint32_t events);
  void drive();
  void collectEnded();
  void arm(BQTimeInterval delay);
  Mode* findMode(const BQString* name);
  Socket& socketAt(int number);
  void subscribe(int number, uint32_t events);
  void discard(int number);

  Ref<BQRunLoop> runLoop_;
  int epoll_;
  /* By their numbers. */
  std::vector<Socket> sockets_;
  std::unique_ptr<CURLM, MultiDeleter> multi_;
  Ref<BQFileDescriptor> descriptor_;
  Ref<BQRunLoopTimer> timer_;
  bool isArmed_ = false;
  /* libcurl asked to be called at once. */
  bool isDue_ = false;
  bool isDriving_ = false;
  bool isAbandoned_ = false;
  std::vector<Mode> modes_;
  /* The mode that still has the descriptor although no transfer uses it. */
  Ref<const BQString> lastMode_;
  std::list<Transfer> idle_;
  std::list<Transfer> waiting_;
  /* Those that libcurl works on, and those that have ended but are not released. */
  std::list<Transfer> started_;
  int64_t working_ = 0;
  int64_t limit_ = 0;
  int64_t requestedLimit_ = TransferOptions().connectionLimit;
};

}  // namespace bq

#endif
