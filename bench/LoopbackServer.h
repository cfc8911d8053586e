/* An HTTP server in a process of its own, for programs that make many calls of it. */
#ifndef SUPPORT_LOOPBACK_SERVER_H
#define SUPPORT_LOOPBACK_SERVER_H

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace support {

/*
 * Serves on a free port of the loopback, any number of kept connections on one thread. It ends with this
 * object, and with this process.
 */
class LoopbackServer {
 public:
  enum class Then { keep, close, reset };

  struct Answer {
    /* All that is sent. Borrowed until the next request. */
    std::string_view bytes;
    /* What becomes of the connection. */
    Then then = Then::keep;
  };

  /* Answers a whole request, its header included. */
  using Answerer = std::function<Answer(std::string_view request)>;

  /* `prepare` is called in the server's process, and gives what answers there. Starts it, or ends the
   * program. */
  explicit LoopbackServer(const std::function<Answerer()>& prepare);
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  pid_t process() const { return process_; }
  /* The URL of a path, which begins with a slash. */
  std::string url(std::string_view path) const;

 private:
  pid_t process_ = -1;
  /* The server ends when the writing side is closed, which is why nobody writes to it. */
  int lifeline_ = -1;
  uint16_t port_ = 0;
};

}  // namespace support

#endif
