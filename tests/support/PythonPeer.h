/* The XML-RPC server of tests/support/python, running as a process of its own. */
#ifndef SUPPORT_PYTHON_PEER_H
#define SUPPORT_PYTHON_PEER_H

#include <sys/types.h>

#include <string>

/*
 * The process lives as long as the object. If it cannot be started, the port is 0 and the calls of
 * the test fail.
 */
class PythonPeer {
 public:
  PythonPeer();
  ~PythonPeer();
  PythonPeer(const PythonPeer&) = delete;
  PythonPeer& operator=(const PythonPeer&) = delete;

  std::string url(const std::string& path) const;

 private:
  pid_t process_ = -1;
  /* The server ends when this, its standard input, does: also if the test dies. */
  int input_ = -1;
  int port_ = 0;
};

#endif
