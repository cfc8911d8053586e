/* Runs the documents in the files *.cases, whose language xmlrpc.cases explains, through the public
 * functions. */
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include <VX/VX.h>
#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

using Values = std::vector<Value>;

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
    if (letter < 3) text.replace(i, 2, 1, "\n\r\t"[letter]);
    if (letter == 3) text.replace(i, 4, 1, static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)));
    if (letter > 3) ++i;
  }
  return text;
}

/* "..." in the expected text matches any text. */
bool agrees(const std::string& expected, const std::string& actual) {
  std::string pattern = std::regex_replace(expected, std::regex("[^\\w\\s<>]"), "\\$&");
  pattern = std::regex_replace(pattern, std::regex("\\\\\\.\\\\\\.\\\\\\."), "[^]*");
  return std::regex_match(actual, std::regex(pattern));
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

std::string flat(const std::string& document) {
  return std::regex_replace(document, std::regex("\r\n *"), "");
}

std::string wrapped(std::string around, std::string document) {
  if (document.ends_with("\r\n")) document.resize(document.size() - 2);
  return around.replace(around.find('$'), 1, document);
}

/* The commands that are in force. */
class Setting {
 public:
  /* The text around documents, from a template; whether line ends and indentation count. */
  std::string around;
  bool isExact = true;

  void run(const std::string& command, const std::string& rest) {
    std::istringstream words(rest);
    if (command != "use") {
      values_.at(command) = valuesOf(rest);
    } else {
      for (protocols_.clear(); words >> kind_ && std::isupper(kind_[0]) != 0;)
        protocols_.push_back(valuesOf(kind_)[0]);
      if (protocols_.empty()) protocols_ = {Value()};
    }
  }

  void check(const std::string& inner, const std::string& arrow, const std::string& value) {
    EXPECT_FALSE(protocols_.empty());
    for (const Value& protocol : protocols_) {
      bool isWhole = around.empty() || inner == "(null)";
      std::string document = unescaped(isWhole ? inner : wrapped(around, inner));
      if (arrow == "==") {
        Value list = Value::adopt(BQPropertyListCreateFromXMLData(blob(document), nullptr));
        std::string expected = value == "itself" ? document : unescaped(wrapped(around, value));
        EXPECT_EQ(flat(bytes(Value::adopt(BQPropertyListCreateXMLData(list.get())))), flat(expected));
        continue;
      }
      auto handler = makeHandler(protocol);
      Values values = arrow == "=>" ? Values() : valuesOf(unescaped(value));
      std::string expected = arrow == "=>" ? unescaped(value) : "";
      for (const Value& each : values) expected += (expected.empty() ? "" : " ") + notation(each.get());
      if (arrow != "<=") {
        std::string actual = read(handler.get(), blob(document));
        EXPECT_TRUE(agrees(expected, actual)) << text(protocol) << " reads " << document << " as " << actual;
      }
      if (arrow != "=>") {
        values.resize(4);
        std::string actual = write(handler.get(), values);
        EXPECT_EQ(isExact ? actual : flat(actual), isExact ? document : flat(document)) << text(protocol);
      }
    }
  }

 private:
  BQRef<OpaqueVXProtocolHandlerRef> makeHandler(const BQString* protocol) {
    auto handler = BQAdopt(VXProtocolHandlerCreate(nullptr, protocol));
    const Values &set = values_["set"], &encode = values_["encode"], &decode = values_["decode"];
    for (size_t i = 0; i < set.size(); i += 2)
      VXProtocolHandlerSetProperty(handler.get(), set[i], set.at(i + 1).get());
    for (size_t i = 0; i < encode.size(); i += 2) {
      VXClientContext context = {0, encode.at(i + 1).as<void>(), nullptr, nullptr, nullptr};
      VXProtocolHandlerSetSerializationOverride(handler.get(), BQGetTypeID(encode[i].get()), writeText,
                                                &context);
    }
    for (size_t i = 0; i < decode.size(); i += 2)
      VXProtocolHandlerSetDeserializationOverride(handler.get(), decode[i], decode.at(i + 1), readAsName,
                                                  nullptr);
    return handler;
  }

  std::string read(VXProtocolHandlerRef handler, const Value& document) {
    if (kind_ == "plist")
      return notation(Value::adopt(BQPropertyListCreateFromXMLData(document, nullptr)).get());
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
    if (kind_ == "description") return text(Value::adopt(BQCopyDescription(values[0])).get());
    if (kind_ == "outcome")
      return std::to_string(VXMethodResultGetOutcome(values[0])) + " " +
             text(Value::adopt(VXMethodResultCopyDescription(values[0])).get());
    const Values& answer = values_["answer"];
    Value request = answer.empty() ? Value() : answer[0];
    auto* document =
        kind_ == "request"
            ? VXProtocolHandlerCopyRequestDocument(handler, values[0], values[1], values[2], values[3])
        : kind_ == "plist" ? BQPropertyListCreateXMLData(values[0].get())
        : kind_ == "value" ? VXProtocolHandlerCopyReplyDocument(handler, request, values[0].get())
                           : VXProtocolHandlerCopyFaultDocument(handler, request, values[0]);
    return bytes(Value::adopt(document));
  }

  Values protocols_;
  std::string kind_;
  std::map<std::string, Values> values_ = {{"set", {}}, {"answer", {}}, {"encode", {}}, {"decode", {}}};
};

class DocumentTest : public testing::TestWithParam<const char*> {
 protected:
  void runLine(std::string line) {
    if (line.starts_with("| ")) {
      (isTemplate_ ? templates_[name_].second : block_) += line.substr(2) + "\r\n";
      return;
    }
    std::smatch match;
    isTemplate_ = std::regex_match(line, match, std::regex("template (\\w+)(?: in (\\w+))?"));
    if (isTemplate_) {
      templates_[name_ = match[1]].first = match[2];
      return;
    }
    if (std::regex_match(line, match, std::regex("\\[.*\\](?: (.*))?"))) {
      if (std::exchange(isCommon_, false)) common_ = setting_;
      setting_ = common_;
      line = match[1];
    }
    const std::regex separator(" ; ");
    std::sregex_token_iterator piece(line.begin(), line.end(), separator, -1), end;
    for (; piece != end && !line.empty(); ++piece) runPiece(*piece);
  }

  void runPiece(const std::string& piece) {
    std::smatch match;
    if (std::regex_match(piece, match, std::regex("(?:(.*) )?(=>|<=|<=>|==) (.*)"))) {
      for (const std::string& document : choicesOf(block_ + match.str(1)))
        setting_.check(document, match[2], match[3]);
      block_.clear();
    } else if (std::regex_match(piece, match, std::regex("(in|exact) (\\w+)"))) {
      setting_.around = around(match[2]);
      setting_.isExact = match[1] == "exact";
    } else {
      size_t end = piece.find(' ');
      setting_.run(piece.substr(0, end), piece.substr(std::min(end, piece.size())));
    }
  }

  std::string around(const std::string& name) const {
    const auto& [outer, text] = templates_.at(name);
    return outer.empty() ? text : wrapped(around(outer), text);
  }

  std::map<std::string, std::pair<std::string, std::string>> templates_; /* outer template and text */
  std::string name_, block_;
  Setting common_, setting_;
  bool isTemplate_ = false, isCommon_ = true;
};

TEST_P(DocumentTest, ReadsAndWritesTheCases) {
  const std::string path = CASES_DIRECTORY + std::string(GetParam());
  std::ifstream file(path);
  testing::internal::CaptureStderr(); /* complaints about documents */
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    testing::ScopedTrace trace(path.c_str(), number, line);
    if (line.empty() || line.starts_with('#')) continue;
    EXPECT_NO_THROW(runLine(line));
  }
  testing::internal::GetCapturedStderr();
  EXPECT_TRUE(!isCommon_ && block_.empty()) << path << " has no cases, or ends before the last is whole";
}

INSTANTIATE_TEST_SUITE_P(Protocols, DocumentTest,
                         testing::Values("/xmlrpc.cases", "/soap.cases", "/plist.cases"));

}  // namespace
