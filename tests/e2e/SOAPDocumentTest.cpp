/*
 * Typed values in the document form, as a server of another make understands them that goes by a schema. That
 * form leaves them without types in the reply, so that a value that comes back does not tell.
 */
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include <BQ/BQ.h>
#include <VX/VX.h>
#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

/* A server that prints its port and serves until its standard input ends, also if the test dies. */
class PeerProcess {
 public:
  PeerProcess(const char* program, const char* script) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return;
    process_ = fork();
    if (process_ == 0) {
      dup2(ends[1], STDIN_FILENO);
      dup2(ends[1], STDOUT_FILENO);
      execlp(program, program, script, nullptr);
      _exit(127);
    }
    close(ends[1]);
    stream_ = ends[0];
    for (char digit = 0; read(stream_, &digit, 1) == 1 && digit != '\n';) port_ += digit;
  }
  ~PeerProcess() {
    close(stream_);
    if (process_ > 0) waitpid(process_, nullptr, 0);
  }
  PeerProcess(const PeerProcess&) = delete;
  PeerProcess& operator=(const PeerProcess&) = delete;

  std::string url() const { return "http://127.0.0.1:" + port_ + "/"; }

 private:
  pid_t process_ = -1;
  int stream_ = -1;
  std::string port_;
};

TEST(SOAPDocument, IsUnderstoodByAServerWithASchema) {
  PeerProcess peer("php", SOAP_DOCUMENT_PEER_SCRIPT);
  Value held =
      Value::adopt(VXMethodInvocationCreate(url(peer.url()), BQSTR("describe"), kVXSOAP2001Protocol));
  auto* invocation = held.as<OpaqueVXMethodInvocationRef>();
  Value line = dictionary({{"article", string("a <b> \xC3\xA9")},
                           {"pieces", integer(3)},
                           {"price", real(2.5)},
                           {"gift", Value::retain(kBQBooleanTrue)},
                           {"due", date(0)},
                           {"stamp", blob("\1\377")}});
  VXMethodInvocationSetParameters(invocation, dictionary({{"line", line}}), nullptr);
  VXMethodInvocationSetProperty(invocation, kVXSOAPMethodNamespaceURI, BQSTR("urn:orders"));
  Value result = Value::adopt(VXMethodInvocationInvoke(invocation));
  EXPECT_FALSE(VXMethodResultIsFault(result)) << text(result.get());
  EXPECT_EQ(text(BQDictionaryGetValue(result, BQSTR("ns1:text"))),
            "{\"article\":\"61203c623e20c3a9\",\"pieces\":3,\"price\":2.5,\"gift\":true,"
            "\"due\":\"323030312d30312d30315430303a30303a30305a\",\"stamp\":\"01ff\"}");
  EXPECT_EQ(notation(BQDictionaryGetValue(result, BQSTR("ns1:line"))),
            "{ns1:article: 'a <b> \xC3\xA9', ns1:pieces: '3', ns1:price: '2.5', ns1:gift: 'true', "
            "ns1:due: '2001-01-01T00:00:00Z', ns1:stamp: 'Af8='}");
}

}  // namespace
