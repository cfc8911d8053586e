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

/* The parts between separators that are not inside quotes, without the blanks around them. */
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
  for (std::string& part : parts) part = std::regex_replace(part, std::regex("^\\s+|\\s+$"), "");
  return parts;
}

std::string chunk(const std::string& bytes) {
  char size[40];
  snprintf(size, sizeof size, "0%zX;x=\"y\"\r\n", bytes.size());
  return size + bytes + "\r\n";
}

/* Bytes as a row writes them: \r, \n and $NAME. */
std::string bytesOf(std::string text) {
  const std::string body = replyBody("ok"), size = std::to_string(body.size());
  const std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n";
  const std::string chunks = head + "Transfer-Encoding: chunked\r\n\r\n";
  const std::pair<std::string, std::string> names[] = {
      {"\\r", "\r"},
      {"\\n", "\n"},
      {"$ok", kOK},
      {"$head", head},
      {"$chunked", chunks + chunk(body.substr(0, 10)) + chunk(body.substr(10)) + "00\r\nTrailer: v\r\n\r\n"},
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
    for (size_t at; (at = text.find(name)) != std::string::npos;) text.replace(at, name.size(), bytes);
  }
  return text;
}

std::vector<Row> rows() {
  std::vector<Row> rows;
  std::ifstream file(EXCHANGES);
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    Words parts = split(line + "||||", '|');
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

class ExchangeTest : public testing::TestWithParam<Row> {
 protected:
  void readRow() {
    answers_ = split(GetParam().answers, ',');
    for (const std::string& steps : split(GetParam().peer, ';')) scripts_.push_back(scriptOf(steps));
    expectedConnections_ = scripts_.size();
    scripts_.push_back(reply(kOK));
  }

  bool has(const std::string& option) const { return options_.contains(option); }
  int number(const std::string& option) const { return std::stoi(options_.at(option)); }

  /* Notes the options, which are words with or without a value. */
  Script scriptOf(const std::string& steps) {
    static const std::map<std::string, Script> words = {
        {"<", Script().expectRequest()}, {"<1", Script().expectFirstBytes()}, {"reset", Script().reset()},
        {"wait", replies({kOK, kOK})},   {"stall", Script().waitForClose()},  {"ok", Script().send(kOK)}};
    static const std::regex step("\"([^\"]*)\"(\\S*)|(again|limit|max|body|stay|proxy|ipv6)=?(\\S*)|(\\S+)");
    Script script;
    for (std::sregex_iterator at(steps.begin(), steps.end(), step), end; at != end; ++at) {
      const std::string bytes = bytesOf((*at)[1]), how = (*at)[2], option = (*at)[3], value = (*at)[4];
      if (option == "again")
        script.then(Script(script), std::stoi(value) - 1);
      else if (!option.empty())
        options_[option] = bytesOf(value);
      else if ((*at)[5].matched)
        script.then(words.at((*at)[5]));
      else if (how == "*")
        script.sendEndlessly(bytes);
      else
        script.then(Script().send(bytes, how == "/1" ? 1 : SIZE_MAX),
                    how.starts_with("x") ? std::stoi(how.substr(1)) : 1);
    }
    return script;
  }

  std::string urlOf(const ScriptedPeer& peer) const {
    return has("proxy") ? "http://unreachable.invalid/" : peer.url();
  }

  std::string streamAnswer(const ScriptedPeer& peer, bool isNext) const {
    Exchange exchange(urlOf(peer), "POST", std::string(has("body") ? number("body") : 10, 'x'));
    if (!has("stay")) exchange.followRedirects();
    if (has("proxy")) exchange.proxy("127.0.0.1", peer.port());
    if (has("max") && !isNext)
      exchange.property(kBQStreamPropertyHTTPMaximumReplySize, integer(number("max")).get());
    std::string answer = exchange.run().answer();
    EXPECT_TRUE(exchange.events().ends_with(answer.starts_with("(") ? "error" : "end")) << exchange.events();
    return answer == replyBody("ok") ? "ok" : answer;
  }

  std::string callOutcome(const ScriptedPeer& peer, bool isNext) const {
    TestCall call(urlOf(peer));
    if (has("stay")) call.set(kVXHTTPFollowsRedirects, kBQBooleanFalse);
    if (has("proxy")) call.set(kVXHTTPProxy, url(peer.url()).get());
    if (has("max") && !isNext) call.set(kVXHTTPReplySizeLimit, number("max"));
    return call.set(kVXMethodInvocationTimeoutValue, has("limit") ? number("limit") : 30).invoke();
  }

  /* A stream error is a fault that names its domain and number. */
  std::string outcomeFor(const std::string& answer) const {
    static const std::map<std::string, int> domains = {{"posix", kBQStreamErrorDomainPOSIX},
                                                       {"http", kBQStreamErrorDomainHTTP}};
    static const std::regex error("\\((\\w+) (\\d+)\\)");
    std::smatch match;
    if (!GetParam().outcome.empty() && answer == answers_.back()) return bytesOf(GetParam().outcome);
    if (!std::regex_match(answer, match, error)) return answer;
    return "Stream Error " + std::to_string(domains.at(match[1])) + " " + match[2].str();
  }

  void check(bool isCall) const {
    SCOPED_TRACE(isCall ? "the invocation" : "the stream");
    /* It serves the connections of the row, then any others well. */
    ScriptedPeer peer(scripts_, has("ipv6"));
    for (const std::string& answer : answers_) {
      const std::string expected = isCall ? outcomeFor(answer) : bytesOf(answer);
      const std::string actual = isCall ? callOutcome(peer, false) : streamAnswer(peer, false);
      bool isPart = expected.starts_with("~") && actual.find(expected.substr(1)) != std::string::npos;
      EXPECT_EQ(isPart ? expected : actual, expected);
    }
    EXPECT_LE(peer.connectionCount(), expectedConnections_) << "a request was sent again";
    EXPECT_EQ(isCall ? callOutcome(peer, true) : streamAnswer(peer, true), "ok") << "the next one";
    if (isCall && has("ipv6")) {
      EXPECT_NE(peer.requests().back().find("\r\nHost: [::1]\r\n"), std::string::npos);
    }
  }

  void checkTool() const {
    SCOPED_TRACE("vxcall");
    ScriptedPeer peer(scripts_, has("ipv6"));
    std::string command = std::string("exec 2>&1 </dev/null ") + VXCALL;
    if (has("stay")) command += " --no-redirect";
    if (has("proxy")) command += " --proxy " + peer.url();
    if (has("max")) command += " --max-reply " + options_.at("max");
    command += " -t " + (has("limit") ? options_.at("limit") : "30");
    command += " --repeat " + std::to_string(answers_.size()) + " '" + urlOf(peer) + "' m";
    std::string printed;
    FILE* output = popen(command.c_str(), "re");
    for (int byte; (byte = fgetc(output)) != EOF;) printed += static_cast<char>(byte);
    const int status = pclose(output);
    const std::string outcome = outcomeFor(answers_.back());
    const bool fails = std::regex_search(outcome, std::regex(" -65\\d\\d\\d$|^Stream Error|^~"));
    EXPECT_EQ(WEXITSTATUS(status), fails ? 3 : 0) << printed;
    EXPECT_EQ(printed == "\"" + outcome + "\"\n", !fails) << printed;
    EXPECT_EQ(printed.find("vxcall: ") != std::string::npos, fails) << printed;
    EXPECT_NE(printed.find(GetParam().complaint), std::string::npos) << printed;
  }

  Words answers_;
  std::map<std::string, std::string> options_;
  std::vector<Script> scripts_;
  size_t expectedConnections_ = 0;
};

TEST_P(ExchangeTest, EndsAsItShouldOnEveryWay) {
  testing::internal::CaptureStderr();
  readRow();
  if (!has("limit")) check(false);
  if (!has("limit") || !isSoak()) check(true);
  if (VXCALL[0] != '\0' && !isSoak()) checkTool();
  testing::internal::GetCapturedStderr();
}

INSTANTIATE_TEST_SUITE_P(Peer, ExchangeTest, testing::ValuesIn(rows()), [](const auto& info) {
  return std::regex_replace(info.param.name, std::regex("\\W+"), "_");
});

}  // namespace
}  // namespace vx
