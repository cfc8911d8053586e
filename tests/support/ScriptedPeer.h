/*
 * An HTTP server that does what a test tells it, right or wrong. It listens on a free port of the
 * loopback interface and runs in threads of its own.
 *
 *   ScriptedPeer peer({reply("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok")});
 *   ... a request to peer.url("/RPC2") ...
 *   EXPECT_EQ(peer.requests().size(), 1u);
 */
#ifndef SUPPORT_SCRIPTED_PEER_H
#define SUPPORT_SCRIPTED_PEER_H

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/* Holds scripts up until the test opens it; copies are the same gate. */
class Gate {
 public:
  Gate() : state_(std::make_shared<State>()) {}
  void open();
  void wait();

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable opened;
    bool isOpen = false;
  };
  std::shared_ptr<State> state_;
};

/* What the peer does on one connection, step by step; at the end it closes the connection. */
class Script {
 public:
  /* Reads a request, its body included, and records it. The script ends if none comes. */
  Script& expectRequest();
  /* Reads the first bytes of a request and no more. */
  Script& expectFirstBytes();
  Script& send(std::string bytes);
  /* Sends each piece in a write, and if it can be a packet, of its own. */
  Script& sendInPieces(std::string bytes, size_t pieceSize);
  /* Sends the bytes again and again until the other side closes. */
  Script& sendEndlessly(std::string bytes);
  Script& waitFor(Gate gate);
  /* Waits until the other side closes. */
  Script& waitForClose();
  /* Ends the connection with a reset. */
  Script& reset();
  /* Goes on with another script. */
  Script& then(const Script& other);

 private:
  friend class ScriptedPeer;
  struct Connection;
  using Step = std::function<bool(Connection&)>;

  Script& add(Step step);

  std::vector<Step> steps_;
  std::vector<Gate> gates_;
};

/* Expects a request, sends the bytes, and leaves the connection open. */
Script reply(std::string bytes);
/* Expects a request, sends the bytes, and closes the connection. */
Script replyAndClose(std::string bytes);
/* Answers every request of a connection with the next bytes, and leaves it open behind the last. */
Script replies(const std::vector<std::string>& bytes);
/* A complete response with these bytes as its body. */
std::string okResponse(const std::string& body, const std::string& contentType = "text/xml");

class ScriptedPeer {
 public:
  /* The first connection gets the first script, and so on; those beyond the last get the last. */
  explicit ScriptedPeer(std::vector<Script> scripts, bool useIPv6 = false);
  ~ScriptedPeer();
  ScriptedPeer(const ScriptedPeer&) = delete;
  ScriptedPeer& operator=(const ScriptedPeer&) = delete;

  /* False if the machine has no such address. */
  bool isListening() const { return listener_ >= 0; }
  int port() const { return port_; }
  std::string url(const std::string& path = "/") const;

  /* The requests as they arrived, and the number of connections that were accepted. */
  std::vector<std::string> requests() const;
  size_t connectionCount() const;
  /* Of those, the number whose scripts are not through yet. */
  size_t openConnectionCount() const;

 private:
  friend class Script;

  void acceptConnections();
  void serve(int socket, size_t index);
  void record(std::string request);
  void finish(int socket);

  std::vector<Script> scripts_;
  bool useIPv6_;
  int listener_ = -1;
  int port_ = 0;
  mutable std::mutex mutex_;
  bool isStopping_ = false;
  std::vector<std::string> requests_;
  std::vector<int> sockets_;
  std::vector<std::thread> servers_;
  std::thread acceptor_;
};

/* A port of the loopback interface on which nobody listens. */
int closedPort();

#endif
