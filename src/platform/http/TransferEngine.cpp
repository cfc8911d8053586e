#include "platform/http/TransferEngine.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include <BQ/BQDate.h>

#include "platform/object/ForkCount.h"

namespace bq {
namespace {

constexpr size_t kMostIdleTransfers = 16;
constexpr int64_t kMostConnections = 16'384;
constexpr int kMostReady = 64;
/* Steps without waiting before the run loop has its turn again. */
constexpr int kMostSteps = 64;
/* A repeating timer stays valid; it is armed by its next fire date alone. */
constexpr BQTimeInterval kNever = 1e9;

uint32_t eventsFor(int what) {
  if (what == CURL_POLL_REMOVE) return 0;
  uint32_t events = 0;
  if ((what & CURL_POLL_IN) != 0) events |= EPOLLIN;
  if ((what & CURL_POLL_OUT) != 0) events |= EPOLLOUT;
  return events;
}

/* Reading tells what an error is. */
bool isReadable(uint32_t events) {
  return (events & ~EPOLLOUT) != 0;
}

Transfer* transferOf(CURL* handle) {
  void* transfer = nullptr;
  curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
  return static_cast<Transfer*>(transfer);
}

/* Outlives the engine, for objects that are destroyed even later in the thread. */
thread_local bool isThreadEnding = false;

/* Keeps the engines of the processes that this one was forked from. */
void keepForEver(TransferEngine* engine) {
  static auto* const engines = new std::vector<TransferEngine*>;
  engines->push_back(engine);
}

struct Slot {
  std::unique_ptr<TransferEngine> engine;
  uint32_t forks = forkCount();

  ~Slot() {
    enterProcess();
    isThreadEnding = true;
    engine.reset();
  }
  void enterProcess() {
    if (std::exchange(forks, forkCount()) == forkCount() || engine == nullptr) return;
    TransferEngine* parents = engine.release();
    keepForEver(parents);
    parents->abandon();
  }
};

Slot& threadSlot() {
  thread_local Slot slot;
  return slot;
}

}  // namespace

TransferEngine* TransferEngine::current() {
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (isThreadEnding || initialised != CURLE_OK) return nullptr;
  /* The run loop comes first, so that it is destroyed last. */
  BQRunLoopGetCurrent();
  Slot& slot = threadSlot();
  slot.enterProcess();
  if (slot.engine == nullptr) {
    auto engine = std::make_unique<TransferEngine>();
    if (engine->isUsable()) slot.engine = std::move(engine);
  }
  // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete): the slot lives as long as the thread.
  return slot.engine.get();
}

TransferEngine::TransferEngine()
    : runLoop_(Ref<BQRunLoop>::retain(BQRunLoopGetCurrent())),
      epoll_(epoll_create1(EPOLL_CLOEXEC)),
      multi_(curl_multi_init()) {
  if (!isUsable()) return;
  CURLM* multi = multi_.get();
  curl_multi_setopt(multi, CURLMOPT_SOCKETFUNCTION, onSocket);
  curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, this);
  curl_multi_setopt(multi, CURLMOPT_TIMERFUNCTION, onTimer);
  curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);
  curl_multi_setopt(multi, CURLMOPT_PIPELINING, CURLPIPE_NOTHING);
  adjustLimit();
  descriptor_ =
      Ref<BQFileDescriptor>::adopt(BQFileDescriptorCreate(epoll_, kBQFileDescriptorRead, onReady, this));
  BQRunLoopTimerContext context{};
  context.info = this;
  timer_ = Ref<BQRunLoopTimer>::adopt(
      BQRunLoopTimerCreate(BQAbsoluteTimeGetCurrent() + kNever, kNever, 0, 0, onDeadline, &context));
}

TransferEngine::~TransferEngine() {
  loseTransfers();
  for (auto* transfers : {&waiting_, &started_, &idle_}) transfers->clear();
  if (descriptor_) BQFileDescriptorInvalidate(descriptor_.get());
  if (timer_) BQRunLoopTimerInvalidate(timer_.get());
  multi_.reset();
  if (epoll_ >= 0) close(epoll_);
}

void TransferEngine::enterProcess() {
  if (!isThreadEnding) threadSlot().enterProcess();
}

void TransferEngine::abandon() {
  isAbandoned_ = true;
  loseTransfers();
  BQFileDescriptorInvalidate(descriptor_.get());
  BQRunLoopTimerInvalidate(timer_.get());
  for (size_t number = 0; number < sockets_.size(); ++number) {
    if (sockets_[number].isConnection) close(static_cast<int>(number));
  }
  close(std::exchange(epoll_, -1));
}

void TransferEngine::loseTransfers() {
  for (const auto* transfers : {&waiting_, &started_}) {
    for (const Transfer& transfer : *transfers) transfer.observer().lost(transfer.observer().context);
  }
}

Transfer* TransferEngine::start(Ref<BQHTTPMessage> request, const TransferOptions& options,
                                TransferObserver observer) {
  if (idle_.empty()) idle_.emplace_back(*this);
  Transfer& transfer = idle_.back();
  transfer.position = std::prev(idle_.end());
  if (!transfer.isUsable()) return nullptr;
  started_.splice(started_.end(), idle_, transfer.position);
  if (std::exchange(requestedLimit_, options.connectionLimit) != options.connectionLimit) adjustLimit();
  isDriving_ = true;
  transfer.begin(std::move(request), options, observer);
  drive();
  return &transfer;
}

void TransferEngine::release(Transfer* transfer) {
  bool isReusable = transfer->isReusable() && idle_.size() < kMostIdleTransfers;
  transfer->stop();
  idle_.splice(idle_.end(), started_, transfer->position);
  if (!isReusable) idle_.pop_back();
}

TransferEngine::Mode* TransferEngine::findMode(const BQString* name) {
  for (Mode& mode : modes_) {
    if (BQEqual(mode.name.get(), name)) return &mode;
  }
  return nullptr;
}

void TransferEngine::retainMode(const BQString* name) {
  if (lastMode_ && !BQEqual(lastMode_.get(), name)) {
    BQRunLoopRemoveFileDescriptor(runLoop_.get(), descriptor_.get(), lastMode_.get());
  }
  lastMode_ = nullptr;
  Mode* mode = findMode(name);
  if (mode != nullptr) {
    ++mode->users;
    return;
  }
  modes_.push_back({Ref<const BQString>::retain(name), 1});
  BQFileDescriptorSetInterest(descriptor_.get(), kBQFileDescriptorRead);
  BQRunLoopAddFileDescriptor(runLoop_.get(), descriptor_.get(), name);
  if (isArmed_) BQRunLoopAddTimer(runLoop_.get(), timer_.get(), name);
}

/* The descriptor stays in the last mode, without an interest: the next transfer often runs there too. */
void TransferEngine::releaseMode(const BQString* name) {
  Mode* mode = findMode(name);
  if (mode == nullptr || --mode->users > 0) return;
  if (isArmed_) BQRunLoopRemoveTimer(runLoop_.get(), timer_.get(), name);
  if (modes_.size() == 1) {
    BQFileDescriptorSetInterest(descriptor_.get(), 0);
    lastMode_ = std::move(mode->name);
  } else {
    BQRunLoopRemoveFileDescriptor(runLoop_.get(), descriptor_.get(), name);
  }
  std::swap(*mode, modes_.back());
  modes_.pop_back();
}

/* Leaves a quarter of the descriptors to the program. */
void TransferEngine::adjustLimit() {
  rlimit descriptors{};
  getrlimit(RLIMIT_NOFILE, &descriptors);
  auto ours = static_cast<int64_t>(std::min<rlim_t>(descriptors.rlim_cur, 2 * kMostConnections));
  limit_ = std::clamp<int64_t>(std::min(ours - ours / 4, requestedLimit_), 1, kMostConnections);
  curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, static_cast<long>(limit_));
  curl_multi_setopt(multi_.get(), CURLMOPT_MAX_TOTAL_CONNECTIONS, static_cast<long>(limit_));
}

void TransferEngine::add(Transfer& transfer) {
  waiting_.splice(waiting_.end(), started_, transfer.position);
  startWaiting();
}

void TransferEngine::remove(Transfer& transfer) {
  if (transfer.isWaiting()) {
    started_.splice(started_.end(), waiting_, transfer.position);
    return;
  }
  curl_multi_remove_handle(multi_.get(), transfer.handle());
  /* libcurl says nothing of the connection if the transfer ended in the step that resumed it. */
  if (Socket& socket = socketAt(transfer.socket); socket.owner == &transfer) socket.owner = nullptr;
  --working_;
  if (!waiting_.empty()) startWaiting();
}

/* libcurl has a queue of its own, but every transfer that ends searches it. */
void TransferEngine::startWaiting() {
  if (working_ >= limit_) adjustLimit();
  while (working_ < limit_ && !waiting_.empty()) {
    Transfer& transfer = waiting_.front();
    started_.splice(started_.end(), waiting_, transfer.position);
    transfer.leaveQueue();
    curl_multi_add_handle(multi_.get(), transfer.handle());
    ++working_;
  }
}

/* What is ready is reported in turn, so that all of it is seen in the end. */
void TransferEngine::discardUnread() {
  epoll_event events[kMostReady];
  for (size_t seen = 0; seen <= sockets_.size() && poll(events) == kMostReady; seen += kMostReady) continue;
}

/* Does all that is due, without waiting. */
void TransferEngine::drive() {
  isDriving_ = true;
  int running = 0;
  for (int step = 0; step < kMostSteps && isDue_; ++step) {
    discardUnread();
    isDue_ = false;
    curl_multi_socket_action(multi_.get(), CURL_SOCKET_TIMEOUT, 0, &running);
    collectEnded();
  }
  isDriving_ = false;
  if (isDue_) arm(0);
}

/* A transfer that ended may start its next attempt here, which is then due. */
void TransferEngine::collectEnded() {
  int waiting = 0;
  while (CURLMsg* message = curl_multi_info_read(multi_.get(), &waiting)) {
    if (message->msg != CURLMSG_DONE) continue;
    CURLcode code = message->data.result;
    transferOf(message->easy_handle)->attemptEnded(code);
  }
}

void TransferEngine::arm(BQTimeInterval delay) {
  BQRunLoopTimerSetNextFireDate(timer_.get(), BQAbsoluteTimeGetCurrent() + delay);
  if (isArmed_) return;
  isArmed_ = true;
  for (const Mode& mode : modes_) BQRunLoopAddTimer(runLoop_.get(), timer_.get(), mode.name.get());
}

TransferEngine::Socket& TransferEngine::socketAt(int number) {
  auto index = static_cast<size_t>(number);
  if (index >= sockets_.size()) sockets_.resize(std::max(index + 1, sockets_.size() * 2));
  return sockets_[index];
}

void TransferEngine::subscribe(int number, uint32_t events) {
  Socket& socket = socketAt(number);
  if (socket.registered == events) return;
  epoll_event event{};
  event.events = events;
  event.data.fd = number;
  int operation = EPOLL_CTL_MOD;
  if (socket.registered == 0) operation = EPOLL_CTL_ADD;
  if (events == 0) operation = EPOLL_CTL_DEL;
  epoll_ctl(epoll_, operation, number, &event);
  socket.registered = events;
}

/* A paused transfer waits for nothing, and still uses its connection. An idle connection is watched for
 * bytes. */
int TransferEngine::onSocket(CURL* handle, curl_socket_t number, int what, void* context, void*) {
  auto* engine = static_cast<TransferEngine*>(context);
  Transfer* transfer = transferOf(handle);
  Socket& socket = engine->socketAt(number);
  transfer->socket = number;
  bool isDone = what == CURL_POLL_REMOVE && !transfer->isPaused();
  socket.owner = isDone ? nullptr : transfer;
  engine->subscribe(number, isDone && socket.isConnection ? EPOLLIN : eventsFor(what));
  return 0;
}

curl_socket_t TransferEngine::onOpenSocket(void* context, curlsocktype, curl_sockaddr* address) {
  auto* transfer = static_cast<Transfer*>(context);
  if (!transfer->connectionOpens()) return CURL_SOCKET_BAD;
  int number = socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
  if (number >= 0) transfer->engine().socketAt(number) = {.isConnection = true};
  return number;
}

int TransferEngine::onCloseSocket(void* context, curl_socket_t number) {
  auto* engine = static_cast<TransferEngine*>(context);
  engine->subscribe(number, 0);
  Socket& socket = engine->socketAt(number);
  if (socket.owner != nullptr) socket.owner->connectionCloses(number);
  socket = {};
  return close(number);
}

/*
 * Bytes that arrive on an idle connection would be taken for the reply to the next request. libcurl drops a
 * connection that has ended when it looks for one, so the number gets a socket that has.
 */
void TransferEngine::discard(int number) {
  subscribe(number, 0);
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0) {
    dup3(ends[0], number, O_CLOEXEC);
    close(ends[0]);
    close(ends[1]);
  } else {
    /* A request on it fails, and is sent again on another connection. */
    shutdown(number, SHUT_RDWR);
  }
}

/* The sockets that are ready, without waiting; discards idle connections that are. Returns their number. */
int TransferEngine::poll(epoll_event* events) {
  int count = std::max(epoll_wait(epoll_, events, kMostReady, 0), 0);
  for (int i = 0; i < count; ++i) {
    int number = events[i].data.fd;
    const Socket& socket = socketAt(number);
    if (socket.isConnection && socket.owner == nullptr) discard(number);
  }
  return count;
}

void TransferEngine::serve(int number, uint32_t events) {
  Transfer* owner = socketAt(number).owner;
  if (owner == nullptr) return;
  int what = (isReadable(events) ? CURL_CSELECT_IN : 0) | ((events & EPOLLOUT) != 0 ? CURL_CSELECT_OUT : 0);
  int running = 0;
  curl_multi_socket_action(multi_.get(), number, what, &running);
  if (isReadable(events)) owner->socketWasRead();
}

int TransferEngine::onTimer(CURLM*, long milliseconds, void* context) {
  auto* engine = static_cast<TransferEngine*>(context);
  engine->isDue_ = milliseconds == 0;
  /* A timer that is no longer needed may fire once in vain: that is cheaper than stopping it. */
  if (milliseconds < 0) return 0;
  if (milliseconds > 0 || !engine->isDriving_) engine->arm(static_cast<double>(milliseconds) / 1000);
  return 0;
}

void TransferEngine::onReady(BQFileDescriptor*, uint32_t, void* context) {
  auto* engine = static_cast<TransferEngine*>(context);
  enterProcess();
  if (engine->isAbandoned_) return;
  epoll_event events[kMostReady];
  int count = engine->poll(events);
  engine->isDriving_ = true;
  for (int i = 0; i < count; ++i) engine->serve(events[i].data.fd, events[i].events);
  engine->collectEnded();
  engine->drive();
}

void TransferEngine::onDeadline(BQRunLoopTimer*, void* context) {
  auto* engine = static_cast<TransferEngine*>(context);
  enterProcess();
  if (engine->isAbandoned_) return;
  for (const Mode& mode : engine->modes_) {
    BQRunLoopRemoveTimer(engine->runLoop_.get(), engine->timer_.get(), mode.name.get());
  }
  engine->isArmed_ = false;
  engine->isDue_ = true;
  engine->drive();
}

}  // namespace bq
