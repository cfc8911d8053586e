#include "Doubt.h"

#include <utility>

#include <VX/VXConstants.h>

#include "Json.h"
#include "TypedText.h"
#include "common/Spelling.h"
#include "common/Text.h"

namespace tools::vxcall {
namespace {

/* What the protocols and other languages call our types. */
struct Synonyms {
  std::string_view type;
  std::vector<std::string_view> words;
};

const Synonyms kSynonyms[] = {
    {"int", {"i4", "i8", "i32", "i64", "int32", "int64", "integer", "long"}},
    {"double", {"float", "number", "real", "decimal"}},
    {"bool", {"boolean"}},
    {"string", {"str", "text"}},
    {"date", {"datetime", "dateTime.iso8601", "timestamp", "timeInstant"}},
    {"base64", {"bytes", "binary", "base64Binary"}},
    {"nil", {"null", "none"}},
    {"json", {"struct", "structure", "dict", "dictionary", "object", "map", "list", "array"}},
};

/* Shorter synonyms are too near to words that mean something else, and so are two edits in the others. */
constexpr size_t kShortestMisspelt = 5;
constexpr size_t kMostEdits = 1;

bool isSynonym(std::string_view word, std::string_view synonym) {
  size_t mostEdits = synonym.size() >= kShortestMisspelt ? kMostEdits : 0;
  return nearestWord(word, {synonym}, mostEdits) == synonym;
}

/* The type that a word means, as it stands or misspelt; empty for none. */
std::string_view typeForWord(std::string_view word) {
  for (const Synonyms& synonyms : kSynonyms) {
    for (std::string_view synonym : synonyms.words) {
      if (isSynonym(word, synonym)) return synonyms.type;
    }
  }
  return nearestWord(word, typeNames());
}

/* The type that a word in front of a colon was meant to be; a URL has a scheme there, and prose a word. */
std::string_view typeMeantBy(std::string_view text) {
  size_t colon = text.find(':');
  if (colon == std::string_view::npos) return {};
  std::string_view word = text.substr(0, colon), value = text.substr(colon + 1);
  if (word == "data" || value.starts_with("//") || value.starts_with(' ')) return {};
  return typeForWord(word);
}

bool isJsonContainer(std::string_view text) {
  return (text.starts_with('{') || text.starts_with('[')) && Json::accept(text);
}

}  // namespace

std::optional<std::string> doubtParameter(std::string_view name, std::string_view text) {
  if (hasType(text)) return std::nullopt;
  std::string meant;
  if (isJsonContainer(text)) {
    meant = "json:" + shortened(text);
  } else if (std::string_view type = typeMeantBy(text); !type.empty()) {
    meant = std::string(type) + shortened(text.substr(text.find(':')));
  } else {
    return std::nullopt;
  }
  return std::string(name) + " is sent as the string '" + shortened(text) + "'; did you mean " + meant +
         "? (string: in front of it leaves this note out)";
}

std::vector<std::string> doubtOptions(const Options& options, const BQString* protocol) {
  std::vector<std::string> notes;
  bool isXMLRPC = protocol == kVXXMLRPCProtocol;
  const std::pair<const char*, bool> soapOptions[] = {{"--namespace", options.methodNamespace.has_value()},
                                                      {"--style", options.style.has_value()},
                                                      {"--result", options.resultName.has_value()},
                                                      {"--soap-header", !options.soapHeaders.empty()}};
  for (auto [name, isGiven] : soapOptions) {
    if (isXMLRPC && isGiven) {
      notes.push_back(std::string(name) + " has no effect in XML-RPC; did you mean --protocol soap-2001?");
    }
  }
  if (protocol == kVXSOAP1999Protocol && options.style == "doc") {
    notes.emplace_back("--style doc has no effect in soap-1999, which has the form rpc alone");
  }
  return notes;
}

}  // namespace tools::vxcall
