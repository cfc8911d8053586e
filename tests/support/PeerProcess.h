/* A server of tests/support, running as a process of its own. */
#ifndef SUPPORT_PEER_PROCESS_H
#define SUPPORT_PEER_PROCESS_H

#include <sys/types.h>

#include <string>

/*
 * Runs a program with a script that prints its port and serves until its standard input ends. The
 * process lives as long as the object. If it cannot be started, the port is 0 and the calls of
 * the test fail.
 */
class PeerProcess {
 public:
  PeerProcess(const std::string& program, const std::string& script);
  ~PeerProcess();
  PeerProcess(const PeerProcess&) = delete;
  PeerProcess& operator=(const PeerProcess&) = delete;

  std::string url(const std::string& path) const;

 private:
  pid_t process_ = -1;
  /* The server ends when this, its standard input, does: also if the test dies. */
  int input_ = -1;
  int port_ = 0;
};

#endif
