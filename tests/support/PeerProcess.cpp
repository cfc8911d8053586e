#include "support/PeerProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

namespace {

struct Pipe {
  int ends[2] = {-1, -1};
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) std::abort();
  }
  int reader() const { return ends[0]; }
  int writer() const { return ends[1]; }
};

/* A decimal number up to the end of a line; 0 if the line does not come. */
int readPort(int fd) {
  int port = 0;
  char digit = 0;
  while (read(fd, &digit, 1) == 1 && digit >= '0' && digit <= '9') port = port * 10 + (digit - '0');
  return port;
}

}  // namespace

PeerProcess::PeerProcess(const std::string& program, const std::string& script) {
  Pipe input;
  Pipe output;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input.reader(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output.writer(), STDOUT_FILENO);
  /* Not written to; the interface only lacks the const. */
  char* arguments[] = {const_cast<char*>(program.c_str()), const_cast<char*>(script.c_str()), nullptr};
  if (posix_spawnp(&process_, arguments[0], &actions, nullptr, arguments, environ) != 0) process_ = -1;
  posix_spawn_file_actions_destroy(&actions);

  close(input.reader());
  close(output.writer());
  input_ = input.writer();
  port_ = readPort(output.reader());
  close(output.reader());
}

PeerProcess::~PeerProcess() {
  close(input_);
  if (process_ > 0) waitpid(process_, nullptr, 0);
}

std::string PeerProcess::url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + path;
}
