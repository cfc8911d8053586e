/* vxserve: a server for trying out XML-RPC and SOAP clients. */
#include <chrono>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <exception>
#include <optional>
#include <string>

#include "ListenSocket.h"
#include "Options.h"
#include "Server.h"
#include "common/LibraryMute.h"
#include "common/Terminal.h"
#include "common/UsageError.h"

namespace tools::vxserve {
namespace {

enum ExitStatus { kExitStopped = 0, kExitFailure = 1, kExitUsage = 2 };

/* How long running requests get when the server is stopped, and how long what was cut short then. */
constexpr std::chrono::seconds kGrace(10);
constexpr std::chrono::seconds kLastGrace(1);

void complain(const std::string& line) {
  tools::complain("vxserve", line);
}

/* The signals that stop the server, taken by one thread only. */
class StopSignals {
 public:
  /* Called before there are threads, which inherit what is blocked. */
  StopSignals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, nullptr);
  }

  void wait() const {
    int signal = 0;
    sigwait(&signals_, &signal);
  }

  /* Whether one came within a short time. */
  bool waitShortly() const {
    timespec time = {0, 10'000'000};
    return sigtimedwait(&signals_, nullptr, &time) > 0;
  }

 private:
  sigset_t signals_;
};

/* Waits until no request runs, at most for that time; another signal ends the wait. */
void drain(Server& server, const StopSignals& signals, std::chrono::seconds time) {
  auto end = std::chrono::steady_clock::now() + time;
  while (!server.isIdle() && std::chrono::steady_clock::now() < end && !signals.waitShortly()) continue;
}

ExitStatus serve(const Options& options) {
  StopSignals signals;
  ListenSocket socket(options.address, options.port);
  LibraryMute mute;
  Server server(options, socket);
  std::printf("listening on %s\n", socket.url().c_str());
  std::fflush(stdout);
  signals.wait();
  server.beginStop();
  socket.refuse();
  drain(server, signals, kGrace);
  server.cutShort();
  drain(server, signals, kLastGrace);
  return kExitStopped;
}

}  // namespace
}  // namespace tools::vxserve

int main(int argc, char** argv) {
  using namespace tools;
  /* A reader that is gone is no reason to stop. */
  std::signal(SIGPIPE, SIG_IGN);
  try {
    std::optional<vxserve::Options> options = vxserve::parseOptions(argc, argv);
    return options ? vxserve::serve(*options) : vxserve::kExitStopped;
  } catch (const UsageError& error) {
    vxserve::complain(error.what());
    return vxserve::kExitUsage;
  } catch (const std::exception& error) {
    vxserve::complain(error.what());
    return vxserve::kExitFailure;
  }
}
