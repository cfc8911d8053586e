/* The other end of the call benchmarks: vxserve, which parses what it gets and writes what it answers. */
#ifndef BENCH_TOOL_SERVER_H
#define BENCH_TOOL_SERVER_H

#include <sys/types.h>

#include <string>

namespace bench {

/* vxserve in a process of its own, on a free port of the loopback. It ends with this object. */
class ToolServer {
 public:
  ToolServer();
  ~ToolServer();
  ToolServer(const ToolServer&) = delete;
  ToolServer& operator=(const ToolServer&) = delete;

  /* Of its XML-RPC endpoint. */
  const std::string& url() const { return url_; }

 private:
  pid_t process_ = -1;
  std::string url_;
};

}  // namespace bench

#endif
