/* Runs the documents in the files *.cases, whose language xmlrpc.cases explains, through the public
 * functions. */
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>

#include <VX/VX.h>
#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

using Values = std::vector<Value>;
using Lines = std::vector<std::pair<int, std::string>>; /* with their numbers */
/* Maps the name of a template to the name of the template around it, if any, and to its text. */
using Templates = std::map<std::string, std::pair<std::string, std::string>>;

std::vector<std::string> choicesOf(const std::string& document) {
  size_t open = document.find('{'), close = document.find('}', open);
  if (close == std::string::npos) return {document};
  std::vector<std::string> result;
  std::istringstream choices(document.substr(open + 1, close - open - 1));
  for (std::string choice; std::getline(choices, choice, '|');) {
    for (const std::string& rest : choicesOf(document.substr(close + 1)))
      result.push_back(document.substr(0, open) + choice + rest);
  }
  return result;
}

std::string unescaped(std::string text) {
  for (size_t i = 0; (i = text.find('\\', i)) != std::string::npos; ++i) {
    size_t letter = std::string_view("nrtx").find(text[i + 1]);
    if (letter == 3) text[i + 3] = static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
    if (letter == 3) text.erase(i, 3);
    if (letter < 3) text.replace(i, 2, 1, "\n\r\t"[letter]);
    if (letter > 3) ++i;
  }
  return text;
}

bool agrees(std::string_view expected, std::string_view actual) {
  size_t gap = expected.find("...");
  if (gap == std::string_view::npos) return expected == actual;
  if (!actual.starts_with(expected.substr(0, gap))) return false;
  for (size_t end = gap; end <= actual.size(); ++end) {
    if (agrees(expected.substr(gap + 3), actual.substr(end))) return true;
  }
  return false;
}

std::string nameOf(const BQTree* element) {
  return text(BQXMLNodeGetString(BQXMLTreeGetNode(element)));
}

const BQString* writeText(VXMethodInvocationRef, BQTypeRef, void* info) {
  return static_cast<const BQString*>(BQRetain(info));
}

BQTypeRef readAsName(VXMethodInvocationRef, const BQTree* element, const BQTree* root, void*) {
  EXPECT_TRUE(nameOf(root).ends_with("Body")) << nameOf(root);
  auto* info = static_cast<const BQXMLElementInfo*>(BQXMLNodeGetInfoPtr(BQXMLTreeGetNode(element)));
  bool declines = info != nullptr && BQDictionaryGetValue(info->attributes, BQSTR("declined")) != nullptr;
  return declines ? nullptr : BQRetain(string("<" + nameOf(element) + ">").get());
}

class DocumentTest : public testing::Test {
 public:
  DocumentTest(std::string path, Lines lines, const Templates& templates)
      : path_(std::move(path)), lines_(std::move(lines)), templates_(templates) {}

  void TestBody() override {
    const std::regex separator(" ; ");
    for (const auto& [number, line] : lines_) {
      testing::ScopedTrace trace(path_.c_str(), number, line);
      if (line.starts_with("| ")) {
        block_ += line.substr(2) + "\r\n";
      } else {
        std::sregex_token_iterator piece(line.begin(), line.end(), separator, -1), end;
        for (; piece != end; ++piece) {
          try {
            run(*piece);
          } catch (const std::exception& error) {
            ADD_FAILURE() << *piece << ": " << error.what();
          }
        }
      }
    }
    EXPECT_TRUE(hasCases_ && block_.empty()) << path_;
  }

 private:
  void run(const std::string& piece) {
    std::istringstream words(piece);
    std::string command, word;
    std::smatch match;
    if (std::regex_match(piece, match, std::regex("(?:(.*) )?(=>|<=|<=>) (.*)"))) {
      for (const std::string& document : choicesOf(block_ + match.str(1)))
        for (const Value& protocol : protocols_) check(protocol, document, match.str(2), match.str(3));
      hasCases_ = !protocols_.empty();
      block_.clear();
    } else if (words >> command; command == "use") {
      for (protocols_.clear(); words >> kind_ && std::isupper(kind_[0]) != 0;)
        protocols_.push_back(valuesOf(kind_)[0]);
    } else if (command == "in" || command == "exact") {
      words >> word;
      around_ = around(word);
      isExact_ = command == "exact";
    } else {
      settings_.at(command) = valuesOf(piece.substr(command.size()));
    }
  }

  static std::string wrapped(std::string around, std::string document) {
    if (document.ends_with("\r\n")) document.resize(document.size() - 2);
    return around.replace(around.find('$'), 1, document);
  }

  std::string around(const std::string& name) const {
    const auto& [outer, text] = templates_.at(name);
    return outer.empty() ? text : wrapped(around(outer), text);
  }

  void check(const BQString* protocol, const std::string& inner, const std::string& arrow,
             const std::string& value) {
    bool isWhole = around_.empty() || inner == "(null)";
    std::string document = unescaped(isWhole ? inner : wrapped(around_, inner));
    Value owned = makeHandler(protocol);
    auto* handler = owned.as<OpaqueVXProtocolHandlerRef>();
    Values values = arrow == "=>" ? Values() : valuesOf(unescaped(value));
    std::string expected = arrow == "=>" ? unescaped(value) : "";
    for (const Value& each : values) expected += (expected.empty() ? "" : " ") + notation(each.get());
    if (arrow != "<=") {
      testing::internal::CaptureStderr();
      std::string actual = read(handler, blob(document));
      testing::internal::GetCapturedStderr();
      EXPECT_TRUE(agrees(expected, actual)) << text(protocol) << " reads " << document << " as " << actual;
    }
    if (arrow != "=>") {
      values.resize(4);
      std::string actual = write(handler, values);
      bool isExact = isExact_ || around_.empty();
      EXPECT_EQ(isExact ? actual : flat(actual), isExact ? document : flat(document)) << text(protocol);
    }
  }

  static std::string flat(const std::string& document) {
    return std::regex_replace(document, std::regex("\r\n *"), "");
  }

  Value makeHandler(const BQString* protocol) {
    Value result = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol));
    auto* handler = result.as<OpaqueVXProtocolHandlerRef>();
    const Values &set = settings_["set"], &encode = settings_["encode"], &decode = settings_["decode"];
    for (size_t i = 0; i < set.size(); i += 2)
      VXProtocolHandlerSetProperty(handler, set[i], set.at(i + 1).get());
    for (size_t i = 0; i < encode.size(); i += 2) {
      VXClientContext context = {0, encode.at(i + 1).as<void>(), nullptr, nullptr, nullptr};
      VXProtocolHandlerSetSerializationOverride(handler, BQGetTypeID(encode[i].get()), writeText, &context);
    }
    for (size_t i = 0; i < decode.size(); i += 2)
      VXProtocolHandlerSetDeserializationOverride(handler, decode[i], decode.at(i + 1), readAsName, nullptr);
    return result;
  }

  std::string read(VXProtocolHandlerRef handler, const Value& document) {
    bool isRequest = kind_ == "request";
    Value read =
        Value::adopt(isRequest ? VXProtocolHandlerCopyRequestDictionary(handler, document)
                               : VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("m"), document));
    if (kind_ == "result" || read.get() == nullptr) return notation(read.get());
    auto* extra = static_cast<const BQDictionary*>(BQDictionaryGetValue(read, kVXFaultExtra));
    if (extra != nullptr) return "! " + text(BQDictionaryGetValue(extra, kVXStreamErrorMessage));
    if (!isRequest) return notation(BQDictionaryGetValue(read, kVXMethodInvocationResult));
    Value others = Value::adopt(BQDictionaryCreateMutableCopy(0, read));
    std::string result;
    for (const BQString* key : {kVXRequestMethodName, kVXRequestParameters, kVXRequestParameterOrder}) {
      result += notation(BQDictionaryGetValue(read, key)) + " ";
      BQDictionaryRemoveValue(others.as<BQDictionary>(), key);
    }
    return result + notation(others.get());
  }

  std::string write(VXProtocolHandlerRef handler, const Values& values) {
    const Values& answer = settings_["answer"];
    Value request = answer.empty() ? Value() : answer[0];
    auto* document =
        kind_ == "request"
            ? VXProtocolHandlerCopyRequestDocument(handler, values[0], values[1], values[2], values[3])
        : kind_ == "value" ? VXProtocolHandlerCopyReplyDocument(handler, request, values[0].get())
                           : VXProtocolHandlerCopyFaultDocument(handler, request, values[0]);
    return bytes(Value::adopt(document));
  }

  const std::string path_;
  const Lines lines_;
  const Templates templates_;
  Values protocols_;
  std::string kind_, around_, block_;
  bool isExact_ = false, hasCases_ = false;
  std::map<std::string, Values> settings_ = {{"set", {}}, {"answer", {}}, {"encode", {}}, {"decode", {}}};
};

/* Registers the tests of a file, which must be done before main begins. */
bool addTests(const std::string& path) {
  std::ifstream file(path);
  Templates templates;
  std::vector<std::pair<std::string, Lines>> tests;
  Lines common;
  std::string line, name, word;
  for (int number = 1; std::getline(file, line); ++number) {
    std::istringstream words(line);
    if (line.empty() || line.starts_with('#')) continue;
    if (line.starts_with('[')) {
      size_t end = line.find(']');
      tests.emplace_back(line.substr(1, end - 1), common);
      if (end + 2 < line.size()) tests.back().second.push_back({number, line.substr(end + 2)});
    } else if (line.starts_with("template ")) {
      words >> word >> name >> word >> templates[name].first;
    } else if (tests.empty() && line.starts_with("| ")) {
      templates[name].second += line.substr(2) + "\r\n";
    } else {
      (tests.empty() ? common : tests.back().second).push_back({number, line});
    }
  }
  if (tests.empty()) throw std::runtime_error(path + " has no tests");
  for (const auto& [title, lines] : tests) {
    size_t dot = title.find('.');
    testing::RegisterTest(title.substr(0, dot).c_str(), title.substr(dot + 1).c_str(), nullptr, nullptr,
                          path.c_str(), lines.at(0).first,
                          [=] { return new DocumentTest(path, lines, templates); });
  }
  return true;
}

const std::string kDirectory = CASES_DIRECTORY;
const bool kAreAdded = addTests(kDirectory + "/xmlrpc.cases") && addTests(kDirectory + "/soap.cases");

}  // namespace
