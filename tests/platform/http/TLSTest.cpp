/* Encrypted connections, to the server of the openssl tool. */
#include <gtest/gtest.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

#include "platform/http/Exchange.h"
#include "support/ScriptedPeer.h"

extern char** environ;

namespace {

/* A child process whose output can be read. */
class Child {
 public:
  Child(const std::string& directory, std::vector<std::string> arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    if (posix_spawnp(&process_, pointers[0], &actions, nullptr, pointers.data(), environ) != 0) process_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
  }
  ~Child() {
    if (process_ > 0) kill(process_, SIGKILL);
    wait();
    if (output_ >= 0) close(output_);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /* The exit status; -1 if it did not run or end by itself. */
  int wait() {
    int status = -1;
    if (process_ > 0) waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  std::string readLine() const {
    std::string line;
    for (char c; read(output_, &c, 1) == 1 && c != '\n';) line += c;
    return line;
  }

 private:
  pid_t process_ = -1;
  int output_ = -1;
};

/* A server with a certificate of its own making for 127.0.0.1, which answers GET with files. */
class TLSTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string path = (std::filesystem::temp_directory_path() / "tls-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(path.data()), nullptr);
    directory_ = path;
    int status =
        Child(path, {"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
                     "-nodes", "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1", "-days",
                     "2", "-keyout", "key.pem", "-out", "cert.pem"})
            .wait();
    if (status != 0) GTEST_SKIP() << "no openssl tool here";
    std::ofstream(file("page")) << "HTTP/1.0 200 OK\r\n\r\na page";
    startServer("cert.pem");
  }

  void startServer(const std::string& certificate) {
    server_ = std::make_unique<Child>(
        directory_, std::vector<std::string>{"openssl", "s_server", "-accept", "127.0.0.1:0", "-cert",
                                             certificate, "-key", "key.pem", "-HTTP"});
    std::string line;
    while (!line.starts_with("ACCEPT ")) {
      line = server_->readLine();
      ASSERT_FALSE(line.empty()) << "the server did not start";
    }
    port_ = line.substr(line.rfind(':') + 1);
  }

  void TearDown() override {
    server_ = nullptr;
    std::filesystem::remove_all(directory_);
  }

  std::string file(const std::string& name) const { return (directory_ / name).string(); }
  std::string address(const std::string& host = "127.0.0.1", const std::string& path = "/page") const {
    return "https://" + host + ":" + port_ + path;
  }
  String authority() const { return string(file("cert.pem")); }

  std::filesystem::path directory_;
  std::unique_ptr<Child> server_;
  std::string port_;
};

TEST_F(TLSTest, CertificateIsVerifiedByDefault) {
  Exchange exchange(address(), "GET", "");
  exchange.run();
  EXPECT_EQ(exchange.events(), "error");
  EXPECT_EQ(exchange.error(), "tls 2");
}

TEST_F(TLSTest, GivenAuthorityIsTrusted) {
  Exchange exchange(address(), "GET", "");
  exchange.property(kBQStreamPropertyTLSCertificateAuthorityFile, authority().get()).run();
  EXPECT_EQ(exchange.error(), "none");
  EXPECT_EQ(exchange.body(), "a page");
  /* The next request of the thread does not inherit the trust. */
  Exchange next(address(), "GET", "");
  next.run();
  EXPECT_EQ(next.error(), "tls 2");
}

TEST_F(TLSTest, CertificateMustNameTheHost) {
  Exchange exchange(address("localhost"), "GET", "");
  exchange.property(kBQStreamPropertyTLSCertificateAuthorityFile, authority().get()).run();
  EXPECT_EQ(exchange.error(), "tls 2");
}

TEST_F(TLSTest, CertificateMustNotHaveExpired) {
  std::ofstream(file("names")) << "subjectAltName=IP:127.0.0.1";
  Child request(directory_, {"openssl", "req", "-new", "-key", "key.pem", "-subj", "/CN=127.0.0.1", "-out",
                             "request.pem"});
  ASSERT_EQ(request.wait(), 0);
  for (const auto& [days, error] : {std::pair("2", "none"), {"-1", "tls 2"}}) {
    Child sign(directory_, {"openssl", "x509", "-req", "-in", "request.pem", "-signkey", "key.pem", "-days",
                            days, "-extfile", "names", "-out", "dated.pem"});
    ASSERT_EQ(sign.wait(), 0);
    startServer("dated.pem");
    Exchange exchange(address(), "GET", "");
    exchange.property(kBQStreamPropertyTLSCertificateAuthorityFile, string(file("dated.pem")).get()).run();
    EXPECT_EQ(exchange.error(), error) << days << " days";
  }
}

TEST_F(TLSTest, VerificationCanBeSwitchedOff) {
  Exchange exchange(address("localhost"), "GET", "");
  exchange.property(kBQStreamPropertyTLSVerifyPeer, kBQBooleanFalse).run();
  EXPECT_EQ(exchange.error(), "none");
  EXPECT_EQ(exchange.body(), "a page");
}

TEST_F(TLSTest, AuthorityFileThatIsNotThereIsAnError) {
  Exchange exchange(address(), "GET", "");
  exchange.property(kBQStreamPropertyTLSCertificateAuthorityFile, string(file("missing.pem")).get()).run();
  EXPECT_EQ(exchange.error(), "tls 2");
}

TEST_F(TLSTest, ServerThatDoesNotSpeakTLSIsAnError) {
  ScriptedPeer peer({Script().expectFirstBytes().send("HTTP/1.1 400 Bad Request\r\n\r\n").waitForClose()});
  Exchange exchange("https://127.0.0.1:" + std::to_string(peer.port()) + "/");
  exchange.run();
  EXPECT_EQ(exchange.error(), "tls 1");
}

TEST_F(TLSTest, RedirectMayLeadToTLSButNotAwayFromIt) {
  ScriptedPeer plain(
      {reply("HTTP/1.1 302 Found\r\nLocation: " + address() + "\r\nContent-Length: 0\r\n\r\n")});
  std::ofstream(file("away")) << "HTTP/1.1 302 Found\r\nLocation: " + plain.url() +
                                     "\r\nContent-Length: 0\r\n\r\n";
  for (const auto& [from, error] :
       {std::pair(plain.url(), "none"), {address("127.0.0.1", "/away"), "http 4"}}) {
    SCOPED_TRACE(from);
    Exchange exchange(from, "GET", "");
    exchange.property(kBQStreamPropertyTLSCertificateAuthorityFile, authority().get());
    exchange.followRedirects().run();
    EXPECT_EQ(exchange.error(), error);
  }
  EXPECT_EQ(plain.requests().size(), 1u);
}

}  // namespace
