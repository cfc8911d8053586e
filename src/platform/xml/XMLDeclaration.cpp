#include "platform/xml/XMLDeclaration.h"

#include <algorithm>

namespace bq {
namespace {

constexpr std::string_view kStart = "<?xml", kEnd = "?>";
constexpr std::string_view kWhitespace = " \t\r\n";

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

std::string lowered(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

void skipWhitespace(std::string_view text, size_t& position) {
  position = std::min(text.find_first_not_of(kWhitespace, position), text.size());
}

bool startsDeclaration(std::string_view document) {
  return document.size() > kStart.size() && lowered(document.substr(0, kStart.size())) == kStart &&
         kWhitespace.find(document[kStart.size()]) != std::string_view::npos;
}

/* As nearly every document has it. */
struct UsualDeclaration {
  std::string_view text;
  size_t encodingStart;
  size_t encodingLength;
};
constexpr UsualDeclaration kUsualDeclarations[] = {
    {"<?xml version=\"1.0\"?>", 0, 0},
    {"<?xml version='1.0'?>", 0, 0},
    {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>", 30, 5},
    {"<?xml version=\"1.0\" encoding=\"utf-8\"?>", 30, 5},
};

}  // namespace

struct XMLDeclaration::Attribute {
  std::string_view name;
  size_t nameStart;
  std::string_view value;
  size_t valueStart;
};

XMLDeclaration::XMLDeclaration(std::string_view document) {
  for (const UsualDeclaration& usual : kUsualDeclarations) {
    if (!document.starts_with(usual.text)) continue;
    length_ = usual.text.size();
    encoding_ = document.substr(usual.encodingStart, usual.encodingLength);
    return;
  }
  if (startsDeclaration(document)) read(document);
}

void XMLDeclaration::read(std::string_view document) {
  size_t end = document.find(kEnd);
  if (end == std::string_view::npos) return;
  length_ = end + kEnd.size();
  std::string_view text = document.substr(0, length_);
  bool inCapitals = text.substr(2, 3) == "XML";
  replace(text, 0, kStart);
  size_t position = kStart.size();
  Attribute attribute;
  while (readAttribute(text, position, attribute)) {
    std::string name = lowered(attribute.name);
    bool isCapital = std::none_of(attribute.name.begin(), attribute.name.end(),
                                  [](char c) { return c >= 'a' && c <= 'z'; });
    if (name != attribute.name && !(inCapitals && isCapital)) break;
    replace(text, attribute.nameStart, name);
    if (name == "encoding") encoding_ = attribute.value;
    if (name == "standalone" && attribute.value == "yes") {
      char quote = text[attribute.valueStart - 1];
      replace(text, attribute.valueStart, std::string("no") + quote + ' ');
    }
  }
}

/* Reads ` name = "value"`. False at the end and at anything else. */
bool XMLDeclaration::readAttribute(std::string_view text, size_t& position, Attribute& attribute) {
  skipWhitespace(text, position);
  attribute.nameStart = position;
  position = text.find_first_of(" \t\r\n=\"'<>?", position);
  if (position == std::string_view::npos) return false;
  attribute.name = text.substr(attribute.nameStart, position - attribute.nameStart);
  skipWhitespace(text, position);
  if (attribute.name.empty() || position == text.size() || text[position++] != '=') return false;
  skipWhitespace(text, position);
  if (position == text.size() || (text[position] != '"' && text[position] != '\'')) return false;
  attribute.valueStart = position + 1;
  size_t quote = text.find(text[position], attribute.valueStart);
  if (quote == std::string_view::npos) return false;
  attribute.value = text.substr(attribute.valueStart, quote - attribute.valueStart);
  position = quote + 1;
  return true;
}

void XMLDeclaration::replace(std::string_view text, size_t position, std::string_view replacement) {
  if (text.substr(position, replacement.size()) == replacement) return;
  if (replacement_.empty()) replacement_ = text;
  replacement_.replace(position, replacement.size(), replacement);
}

}  // namespace bq
