#include "platform/http/TransferEngine.h"

#include <sys/epoll.h>

#include <algorithm>
#include <utility>

#include <BQ/BQDate.h>

#include "platform/http/SigpipeGuard.h"
#include "platform/object/ForkCount.h"

namespace bq {
namespace {

constexpr size_t kMostIdleTransfers = 16;
/* Of a thread, at work and idle together: a process may have no more than 1024 descriptors. */
constexpr size_t kMostConnections = 128;
constexpr size_t kMostReady = 32;
/* Steps without waiting before the run loop has its turn again. */
constexpr int kMostSteps = 64;
/* A timer that repeats stays valid; it is armed by its next fire date alone. */
constexpr BQTimeInterval kNever = 1e9;

uint32_t eventsFor(int what) {
  if (what == CURL_POLL_REMOVE) return 0;
  uint32_t events = 0;
  if ((what & CURL_POLL_IN) != 0) events |= EPOLLIN;
  if ((what & CURL_POLL_OUT) != 0) events |= EPOLLOUT;
  return events;
}

Transfer* transferOf(CURL* handle) {
  void* transfer = nullptr;
  curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
  return static_cast<Transfer*>(transfer);
}

/* Outlives the engine, for objects that are destroyed even later in the thread. */
thread_local bool isThreadEnding = false;

/* Keeps the engines of the processes that this one comes from. Only the thread that forked has one. */
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
    : runLoop_(Ref<BQRunLoop>::retain(BQRunLoopGetCurrent())), multi_(curl_multi_init()) {
  if (!isUsable()) return;
  CURLM* multi = multi_.get();
  curl_multi_setopt(multi, CURLMOPT_SOCKETFUNCTION, onSocket);
  curl_multi_setopt(multi, CURLMOPT_SOCKETDATA, this);
  curl_multi_setopt(multi, CURLMOPT_TIMERFUNCTION, onTimer);
  curl_multi_setopt(multi, CURLMOPT_TIMERDATA, this);
  curl_multi_setopt(multi, CURLMOPT_PIPELINING, CURLPIPE_NOTHING);
  curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, static_cast<long>(kMostConnections));
  descriptor_ = Ref<BQFileDescriptor>::adopt(
      BQFileDescriptorCreate(sockets_.descriptor(), kBQFileDescriptorRead, onReady, this));
  BQRunLoopTimerContext context{};
  context.info = this;
  timer_ = Ref<BQRunLoopTimer>::adopt(
      BQRunLoopTimerCreate(BQAbsoluteTimeGetCurrent() + kNever, kNever, 0, 0, onDeadline, &context));
}

TransferEngine::~TransferEngine() {
  SigpipeGuard guard(usesTLS_);
  loseTransfers();
  for (const auto& transfer : running_) transfer->stop();
  running_.clear();
  idle_.clear();
  if (descriptor_) BQFileDescriptorInvalidate(descriptor_.get());
  if (timer_) BQRunLoopTimerInvalidate(timer_.get());
  multi_.reset();
}

void TransferEngine::enterProcess() {
  if (!isThreadEnding) threadSlot().enterProcess();
}

void TransferEngine::abandon() {
  isAbandoned_ = true;
  loseTransfers();
  BQFileDescriptorInvalidate(descriptor_.get());
  BQRunLoopTimerInvalidate(timer_.get());
  sockets_.abandon();
}

void TransferEngine::loseTransfers() {
  for (const auto& transfer : running_) transfer->observer().lost(transfer->observer().context);
}

Transfer* TransferEngine::start(Ref<BQHTTPMessage> request, const TransferOptions& options,
                                TransferObserver observer) {
  if (idle_.empty()) idle_.push_back(std::make_unique<Transfer>(*this));
  std::unique_ptr<Transfer> transfer = std::move(idle_.back());
  idle_.pop_back();
  if (!transfer->isUsable()) return nullptr;
  running_.push_back(std::move(transfer));
  Transfer* started = running_.back().get();
  isDriving_ = true;
  started->begin(std::move(request), options, observer);
  SigpipeGuard guard(usesTLS_);
  drive();
  return started;
}

void TransferEngine::release(Transfer* transfer) {
  auto isTransfer = [transfer](const auto& running) { return running.get() == transfer; };
  auto found = std::find_if(running_.begin(), running_.end(), isTransfer);
  if (found == running_.end()) return;
  std::unique_ptr<Transfer> released = std::move(*found);
  *found = std::move(running_.back());
  running_.pop_back();
  bool isReusable = released->isReusable() && idle_.size() < kMostIdleTransfers;
  released->stop();
  if (isReusable) idle_.push_back(std::move(released));
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

/* In the last mode the descriptor stays, without an interest: the next transfer often runs there too. */
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

void TransferEngine::add(Transfer& transfer) {
  usesTLS_ = usesTLS_ || transfer.isEncrypted();
  waiting_.push_back(&transfer);
  startWaiting();
}

void TransferEngine::remove(Transfer& transfer) {
  if (std::erase(waiting_, &transfer) != 0) return;
  SigpipeGuard guard(usesTLS_);
  curl_multi_remove_handle(multi_.get(), transfer.handle());
  if (!transfer.isPaused()) --atWork_;
  startWaiting();
}

void TransferEngine::startWaiting() {
  while (atWork_ < kMostConnections && !waiting_.empty()) {
    curl_multi_add_handle(multi_.get(), waiting_.front()->handle());
    waiting_.pop_front();
    ++atWork_;
  }
}

CURLcode TransferEngine::resume(Transfer& transfer) {
  ++atWork_;
  SigpipeGuard guard(usesTLS_);
  return curl_easy_pause(transfer.handle(), CURLPAUSE_CONT);
}

/* Does all that is due, without waiting. */
void TransferEngine::drive() {
  isDriving_ = true;
  startWaiting();
  int running = 0;
  for (int step = 0; step < kMostSteps && isDue_; ++step) {
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

int TransferEngine::onSocket(CURL*, curl_socket_t socket, int what, void* engine, void*) {
  static_cast<TransferEngine*>(engine)->sockets_.watch(socket, eventsFor(what));
  return 0;
}

int TransferEngine::onTimer(CURLM*, long milliseconds, void* context) {
  auto* engine = static_cast<TransferEngine*>(context);
  engine->isDue_ = milliseconds == 0;
  /* A timer that is not needed any more may fire once in vain: that is cheaper than to stop it. */
  if (milliseconds < 0) return 0;
  if (milliseconds > 0 || !engine->isDriving_) engine->arm(static_cast<double>(milliseconds) / 1000);
  return 0;
}

void TransferEngine::onReady(BQFileDescriptor*, uint32_t, void* context) {
  auto* engine = static_cast<TransferEngine*>(context);
  enterProcess();
  if (engine->isAbandoned_) return;
  SigpipeGuard guard(engine->usesTLS_);
  SocketTable::Ready ready[kMostReady];
  size_t count = engine->sockets_.collectReady(ready, kMostReady);
  engine->isDriving_ = true;
  int running = 0;
  for (size_t i = 0; i < count; ++i) {
    Transfer* owner = engine->sockets_.ownerOf(ready[i].socket);
    curl_multi_socket_action(engine->multi_.get(), ready[i].socket, ready[i].events, &running);
    if (owner != nullptr) owner->socketWasRead();
  }
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
  SigpipeGuard guard(engine->usesTLS_);
  engine->isArmed_ = false;
  engine->isDue_ = true;
  engine->drive();
}

}  // namespace bq
