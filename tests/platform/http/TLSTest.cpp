/* Encrypted connections, to the server of the openssl tool. */
#include <gtest/gtest.h>

#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

#include "platform/http/Exchange.h"
#include "support/ScriptedPeer.h"

namespace {

using values::string;

/* A server with a certificate of its own making for 127.0.0.1, which answers GET with files. */
class TLSTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string path = (std::filesystem::temp_directory_path() / "tls-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(path.data()), nullptr);
    directory_ = path;
    ASSERT_TRUE(
        run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=127.0.0.1"
            " -addext subjectAltName=IP:127.0.0.1 -days 2 -keyout key.pem -out cert.pem"))
        << "install openssl";
    std::ofstream(file("page")) << "HTTP/1.0 200 OK\r\n\r\na page";
    startServer();
  }

  void TearDown() override {
    stopServer();
    std::filesystem::remove_all(directory_);
  }

  bool run(const std::string& command) const { return std::system(inDirectory(command).c_str()) == 0; }

  void startServer() {
    std::string command =
        "echo $$; exec openssl s_server -accept 127.0.0.1:0 -key key.pem -cert cert.pem -HTTP";
    server_ = popen(inDirectory(command).c_str(), "re");
    ASSERT_NE(server_, nullptr);
    char line[200];
    ASSERT_NE(fgets(line, sizeof line, server_), nullptr);
    process_ = std::atoi(line);
    do {
      ASSERT_NE(fgets(line, sizeof line, server_), nullptr) << "the server did not start";
    } while (!std::string_view(line).starts_with("ACCEPT "));
    port_ = std::to_string(std::atoi(strrchr(line, ':') + 1));
  }

  void stopServer() {
    if (process_ > 0) kill(std::exchange(process_, 0), SIGKILL);
    if (server_ != nullptr) pclose(std::exchange(server_, nullptr));
  }

  std::string inDirectory(const std::string& command) const {
    return "cd '" + directory_.string() + "' && exec 2>/dev/null </dev/null && " + command;
  }
  std::string file(const std::string& name) const { return (directory_ / name).string(); }
  std::string address(const std::string& host = "127.0.0.1", const std::string& path = "/page") const {
    return "https://" + host + ":" + port_ + path;
  }

  /* The body of the reply to a GET, or the error in brackets. An authority may be empty. */
  std::string get(const std::string& address, const std::string& authority, bool verifies = true) const {
    Exchange exchange(address, "GET", "");
    auto authorityFile = string(file(authority));
    if (!authority.empty()) {
      exchange.property(kBQStreamPropertyTLSCertificateAuthorityFile, authorityFile.get());
    }
    if (!verifies) exchange.property(kBQStreamPropertyTLSVerifyPeer, kBQBooleanFalse);
    return exchange.followRedirects().run().answer();
  }

  std::filesystem::path directory_;
  FILE* server_ = nullptr;
  pid_t process_ = 0;
  std::string port_;
};

TEST_F(TLSTest, CertificateIsVerifiedUnlessSwitchedOff) {
  EXPECT_EQ(get(address(), ""), "(tls 2)");
  EXPECT_EQ(get(address(), "cert.pem"), "a page");
  EXPECT_EQ(get(address(), ""), "(tls 2)") << "the trust is that of one request";
  EXPECT_EQ(get(address("localhost"), "cert.pem"), "(tls 2)") << "it must name the host";
  EXPECT_EQ(get(address(), "page"), "(tls 2)") << "no certificates in it";
  EXPECT_EQ(get(address("localhost"), "", false), "a page");
}

TEST_F(TLSTest, RedirectMayLeadToTLSButNotAwayFromIt) {
  auto redirectTo = [](const std::string& target) {
    return "HTTP/1.1 302 Found\r\nLocation: " + target + "\r\nContent-Length: 0\r\n\r\n";
  };
  ScriptedPeer plain({reply(redirectTo(address()))});
  std::ofstream(file("away")) << redirectTo(plain.url());
  EXPECT_EQ(get(plain.url(), "cert.pem"), "a page");
  EXPECT_EQ(get(address("127.0.0.1", "/away"), "cert.pem"), "(http 4)");
  EXPECT_EQ(plain.requests().size(), 1u);
}

TEST(TLSPeer, RequestsForANewHandshakeDoNotHoldUpTheFirst) {
  const char request[] = "\x16\x03\x03\0\4\0\0\0";
  ScriptedPeer peer({Script().expectFirstBytes().sendEndlessly(std::string(request, sizeof request))});
  EXPECT_EQ(Exchange("https" + peer.url().substr(4)).run().answer(), "(tls 1)");
}

}  // namespace
