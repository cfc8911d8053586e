/*
 * Runs each row of exchanges.cases through a read stream, an invocation and vxcall: the peer does what the
 * row says, all three end as the row says, and the next call to the same peer succeeds.
 */
#include <malloc.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

#include "Call.h"
#include "platform/http/Exchange.h"

namespace vx {
namespace {

using Words = std::vector<std::string>;

struct Row {
  std::string name, peer, answers, outcome, complaint;

  friend std::ostream& operator<<(std::ostream& stream, const Row& row) { return stream << row.name; }
};

std::string trimmed(const std::string& text) {
  return std::regex_replace(text, std::regex("^\\s+|\\s+$"), "");
}

/* The parts between separators that are not inside quotes. */
Words split(const std::string& text, char separator) {
  Words parts(1);
  bool isQuoted = false;
  for (char character : text) {
    if (character == '"') isQuoted = !isQuoted;
    if (character == separator && !isQuoted) {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  for (std::string& part : parts) part = trimmed(part);
  return parts;
}

std::string repeated(const std::string& text, int times) {
  std::string result;
  while (times-- > 0) result += text;
  return result;
}

Script repeated(const Script& script, int times) {
  Script result;
  while (times-- > 0) result.then(script);
  return result;
}

std::string hex(size_t number) {
  char digits[20];
  snprintf(digits, sizeof digits, "%zx", number);
  return digits;
}

std::string chunk(const std::string& size, const std::string& bytes) {
  return size + "\r\n" + bytes + "\r\n";
}

/* Bytes as a row writes them: \r, \n and $NAME. */
std::string bytesOf(std::string text) {
  const std::string body = replyBody("ok"), size = std::to_string(body.size());
  const std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n";
  const std::string chunks = head + "Transfer-Encoding: chunked\r\n\r\n";
  const std::pair<const char*, std::string> names[] = {
      {"\\r", "\r"},
      {"\\n", "\n"},
      {"$ok", kOK},
      {"$head", head},
      {"$chunked", chunks + chunk("000A;x=\"y\"", body.substr(0, 10)) +
                       chunk(hex(body.size() - 10), body.substr(10)) + "00\r\nTrailer: v\r\n\r\n"},
      {"$chunks", chunks},
      {"$to", "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: "},
      {"$size", size},
      {"$longer", std::to_string(body.size() + 1)},
      {"$shorter", std::to_string(body.size() - 1)},
      {"$bare", body.substr(body.find("<methodResponse"))},
      {"$reply", body},
      {"$latin", "<methodResponse><params><param><value>\xE9</value></param></params></methodResponse>"},
      {"$closed", "http://127.0.0.1:" + std::to_string(closedPort()) + "/"}};
  for (const auto& [name, bytes] : names) {
    for (size_t at; (at = text.find(name)) != std::string::npos;) text.replace(at, strlen(name), bytes);
  }
  return text;
}

std::vector<Row> rows() {
  std::vector<Row> rows;
  std::ifstream file(EXCHANGES);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    Words parts = split(line, '|');
    parts.resize(5);
    rows.push_back({parts[0], parts[1], parts[2], parts[3], parts[4]});
  }
  return rows;
}

/* Repeated runs look for growth. They leave out what would only take long. */
bool isSoak() {
  return testing::GTEST_FLAG(repeat) != 1;
}

/* Compares the memory and descriptors in use after the first fifth of the repetitions with the end. */
class GrowthListener : public testing::EmptyTestEventListener {
  void OnTestIterationEnd(const testing::UnitTest&, int iteration) override {
    const int last = testing::GTEST_FLAG(repeat) - 1;
    auto entries = std::filesystem::directory_iterator("/proc/self/fd");
    const size_t descriptors = static_cast<size_t>(std::distance(begin(entries), end(entries)));
    const size_t memory = mallinfo2().uordblks;
    if (iteration == last / 5) early_ = {memory, descriptors};
    if (iteration != last || last < 5) return;
    std::printf("%d rounds: %zu and %zu bytes in use, %zu and %zu descriptors\n", last + 1, early_.first,
                memory, early_.second, descriptors);
    EXPECT_LE(memory, early_.first + 1024 * static_cast<size_t>(last) / 100 + 4096);
    EXPECT_LE(descriptors, early_.second);
  }

  std::pair<size_t, size_t> early_;
};
[[maybe_unused]] const bool kWatchesGrowth = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new GrowthListener);
  return true;
}();

class ExchangeRow {
 public:
  explicit ExchangeRow(const Row& row) : row_(row), answers_(split(row.answers, ',')) {
    Words connections = split(row.peer, ';');
    size_t options = 0;
    for (const std::string& word :
         split(connections[0].substr(0, connections[0].find_first_of("<\"")), ' ')) {
      if (word.empty()) continue;
      options_[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
    }
    options = connections[0].find_first_of("<\"");
    connections[0] = options == std::string::npos ? "" : connections[0].substr(options);
    for (const std::string& steps : connections) scripts_.push_back(scriptOf(steps));
    expectedConnections_ = scripts_.size();
    scripts_.push_back(reply(kOK));
  }

  void check() const {
    if (isSoak() && has("limit")) return;
    if (!has("limit")) checkStream();
    checkCall();
    if (!isSoak()) checkTool();
  }

 private:
  bool has(const std::string& option) const { return options_.contains(option); }
  std::string text(const std::string& option) const { return bytesOf(options_.at(option)); }
  int number(const std::string& option) const { return std::stoi(text(option)); }

  static Script scriptOf(const std::string& steps) {
    static const std::regex step("\"([^\"]*)\"(\\S*)|(\\S+)");
    Script script;
    for (auto at = std::sregex_iterator(steps.begin(), steps.end(), step); at != std::sregex_iterator();
         ++at) {
      const std::string bytes = bytesOf((*at)[1]), how = (*at)[2], word = (*at)[3];
      if (word == "<")
        script.expectRequest();
      else if (word == "<1")
        script.expectFirstBytes();
      else if (word == "reset")
        script.reset();
      else if (word == "wait")
        script.then(replies({kOK, kOK}));
      else if (word == "stall")
        script.waitForClose();
      else if (word == "ok")
        script.send(kOK);
      else if (word.starts_with("again="))
        script = repeated(script, std::stoi(word.substr(6)));
      else if (!word.empty())
        ADD_FAILURE() << "unknown step " << word;
      else if (how == "*")
        script.sendEndlessly(bytes);
      else if (how == "/1")
        script.send(bytes, 1);
      else
        script.send(how.empty() ? bytes : repeated(bytes, std::stoi(how.substr(1))));
    }
    return script;
  }

  /* The peer of one of the three: it serves the row's connections, then any others well. */
  struct Peer : ScriptedPeer {
    explicit Peer(const ExchangeRow& row) : ScriptedPeer(row.scripts_, row.has("ipv6")) {}
  };
  std::string urlOf(const Peer& peer) const {
    return has("proxy") ? "http://unreachable.invalid/" : peer.url();
  }

  std::string streamAnswer(const Peer& peer, bool isNext = false) const {
    Exchange exchange(urlOf(peer), "POST", std::string(has("body") ? number("body") : 10, 'x'));
    if (!has("stay")) exchange.followRedirects();
    if (has("proxy")) exchange.proxy("127.0.0.1", peer.port());
    if (has("max") && !isNext) {
      exchange.property(kBQStreamPropertyHTTPMaximumReplySize, integer(number("max")).get());
    }
    std::string answer = exchange.run().answer();
    EXPECT_TRUE(exchange.events().ends_with(answer.starts_with("(") ? "error" : "end")) << exchange.events();
    return answer == replyBody("ok") ? "ok" : answer;
  }

  void checkStream() const {
    SCOPED_TRACE("the stream");
    Peer peer(*this);
    for (const std::string& expected : answers_) EXPECT_EQ(streamAnswer(peer), bytesOf(expected));
    EXPECT_LE(peer.connectionCount(), expectedConnections_) << "a request was sent again";
    EXPECT_EQ(streamAnswer(peer, true), "ok") << "the next exchange";
  }

  /* A stream error is a fault that names its domain and number. */
  std::string outcomeFor(const std::string& answer) const {
    static const std::map<std::string, int> domains = {{"posix", kBQStreamErrorDomainPOSIX},
                                                       {"http", kBQStreamErrorDomainHTTP},
                                                       {"resolver", kBQStreamErrorDomainResolver},
                                                       {"tls", kBQStreamErrorDomainTLS}};
    static const std::regex error("\\((\\w+) (\\d+)\\)");
    std::smatch match;
    if (!row_.outcome.empty() && answer == answers_.back()) return bytesOf(row_.outcome);
    if (!std::regex_match(answer, match, error)) return answer;
    return "Stream Error " + std::to_string(domains.at(match[1])) + " " + match[2].str();
  }

  std::string callOutcome(const Peer& peer, const std::string& expected, bool isNext = false) const {
    TestCall call(urlOf(peer));
    if (has("stay")) call.set(kVXHTTPFollowsRedirects, kBQBooleanFalse);
    if (has("proxy")) call.set(kVXHTTPProxy, url(peer.url()).get());
    if (has("max") && !isNext) call.set(kVXHTTPReplySizeLimit, number("max"));
    call.set(kVXMethodInvocationTimeoutValue, has("limit") ? number("limit") : 30);
    std::string outcome = call.invoke();
    return expected.starts_with("~") && outcome.find(expected.substr(1)) != std::string::npos ? expected
                                                                                              : outcome;
  }

  void checkCall() const {
    SCOPED_TRACE("the invocation");
    Peer peer(*this);
    for (const std::string& answer : answers_) {
      EXPECT_EQ(callOutcome(peer, outcomeFor(answer)), outcomeFor(answer));
    }
    EXPECT_LE(peer.connectionCount(), expectedConnections_) << "a request was sent again";
    EXPECT_EQ(callOutcome(peer, "ok", true), "ok") << "the next call";
  }

  void checkTool() const {
    if (VXCALL[0] == '\0') return;
    SCOPED_TRACE("vxcall");
    Peer peer(*this);
    std::string command = std::string("exec 2>&1 </dev/null ") + VXCALL;
    if (has("stay")) command += " --no-redirect";
    if (has("proxy")) command += " --proxy " + peer.url();
    if (has("max")) command += " --max-reply " + text("max");
    command += " -t " + (has("limit") ? text("limit") : "30");
    command += " --repeat " + std::to_string(answers_.size()) + " '" + urlOf(peer) + "' m";
    std::string printed;
    FILE* output = popen(command.c_str(), "re");
    for (char buffer[4096]; size_t count = fread(buffer, 1, sizeof buffer, output);)
      printed.append(buffer, count);
    const int status = pclose(output);
    const std::string outcome = outcomeFor(answers_.back());
    const bool fails = std::regex_search(outcome, std::regex(" -65\\d\\d\\d$|^Stream Error|^~"));
    EXPECT_EQ(WEXITSTATUS(status), fails ? 3 : 0) << printed;
    EXPECT_EQ(printed == "\"" + outcome + "\"\n", !fails) << printed;
    EXPECT_EQ(printed.find("vxcall: ") != std::string::npos, fails) << printed;
    EXPECT_NE(printed.find(row_.complaint), std::string::npos) << printed;
  }

  const Row& row_;
  Words answers_;
  std::map<std::string, std::string> options_;
  std::vector<Script> scripts_;
  size_t expectedConnections_ = 0;
};

class ExchangeTest : public testing::TestWithParam<Row> {};

TEST_P(ExchangeTest, EndsAsItShouldOnEveryWay) {
  testing::internal::CaptureStderr();
  ExchangeRow(GetParam()).check();
  testing::internal::GetCapturedStderr();
}

INSTANTIATE_TEST_SUITE_P(Peer, ExchangeTest, testing::ValuesIn(rows()), [](const auto& info) {
  return std::regex_replace(info.param.name, std::regex("\\W+"), "_");
});

}  // namespace
}  // namespace vx
