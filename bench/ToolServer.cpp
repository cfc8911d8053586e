#include "ToolServer.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "Responder.h"

namespace bench {
namespace {

[[noreturn]] void runServer(int output) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  pinToProcessor(kServerProcessor);
  dup2(output, STDOUT_FILENO);
  execl(VXSERVE, VXSERVE, "--port", "0", "--threads", "1", static_cast<char*>(nullptr));
  _exit(127);
}

/* From "listening on http://127.0.0.1:PORT/", which the server says when it is ready. */
std::string readURL(FILE* output) {
  char url[64];
  if (std::fscanf(output, "listening on %63s", url) != 1) {
    std::fprintf(stderr, "bench: vxserve does not start\n");
    std::exit(1);
  }
  return std::string(url) + "RPC2";
}

}  // namespace

ToolServer::ToolServer() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0 || (process_ = fork()) < 0) {
    std::perror("bench: no process");
    std::exit(1);
  }
  if (process_ == 0) runServer(ends[1]);
  close(ends[1]);
  pinToProcessor(kClientProcessor);
  FILE* output = fdopen(ends[0], "r");
  url_ = readURL(output);
  std::fclose(output);
}

ToolServer::~ToolServer() {
  kill(process_, SIGTERM);
  waitpid(process_, nullptr, 0);
}

}  // namespace bench
