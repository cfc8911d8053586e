/*
 * Drives the transfers of one thread on its run loop. Connections are shared by all of them, in
 * whatever modes they run.
 */
#ifndef BQ_HTTP_TRANSFER_ENGINE_H
#define BQ_HTTP_TRANSFER_ENGINE_H

#include <deque>
#include <memory>
#include <vector>

#include <BQ/BQRunLoop.h>

#include <curl/curl.h>

#include "platform/http/SocketTable.h"
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
   * Called before a stream is worked on. In a child of the process the engine that the thread had is
   * the parent's: its streams are lost, and it is kept without being used, since freeing it would end
   * connections that the parent goes on with.
   */
  static void enterProcess();
  void abandon();

  /*
   * Starts a transfer, as far as it goes without waiting. It belongs to the engine and is given
   * back with release(). Null if there is no memory for it.
   */
  Transfer* start(Ref<BQHTTPMessage> request, const TransferOptions& options, TransferObserver observer);
  void release(Transfer* transfer);

  /* Transfers go on while the run loop runs in a mode that was retained more often than released. */
  void retainMode(const BQString* mode);
  void releaseMode(const BQString* mode);

  /* For the transfers. One that is added waits until there is room for its connection. */
  void add(Transfer& transfer);
  void remove(Transfer& transfer);
  /* One that waits for its reader leaves its room to others: the reader may wait for them. */
  void paused() { --atWork_; }
  CURLcode resume(Transfer& transfer);
  SocketTable& sockets() { return sockets_; }

 private:
  struct Mode {
    Ref<const BQString> name;
    int users;
  };
  struct MultiDeleter {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
  };

  static int onSocket(CURL* handle, curl_socket_t socket, int what, void* engine, void*);
  static int onTimer(CURLM*, long milliseconds, void* engine);
  static void onReady(BQFileDescriptor*, uint32_t, void* engine);
  static void onDeadline(BQRunLoopTimer*, void* engine);

  void loseTransfers();
  bool isUsable() const { return multi_ != nullptr && sockets_.descriptor() >= 0; }
  void startWaiting();
  void drive();
  void collectEnded();
  void arm(BQTimeInterval delay);
  Mode* findMode(const BQString* name);

  Ref<BQRunLoop> runLoop_;
  SocketTable sockets_;
  std::unique_ptr<CURLM, MultiDeleter> multi_;
  Ref<BQFileDescriptor> descriptor_;
  Ref<BQRunLoopTimer> timer_;
  bool isArmed_ = false;
  /* libcurl asked to be called at once. */
  bool isDue_ = false;
  bool isDriving_ = false;
  bool usesTLS_ = false;
  bool isAbandoned_ = false;
  std::vector<Mode> modes_;
  /* Where the descriptor is while nobody uses it. */
  Ref<const BQString> lastMode_;
  std::vector<std::unique_ptr<Transfer>> running_;
  /* Of those, the number that are at work, and those that wait for room, in their order. */
  size_t atWork_ = 0;
  std::deque<Transfer*> waiting_;
  std::vector<std::unique_ptr<Transfer>> idle_;
};

}  // namespace bq

#endif
