#include "platform/xml/StartTag.h"

#include <charconv>

namespace bq {
namespace {

constexpr std::string_view kWhitespace = " \t\r\n";

struct PredefinedEntity {
  std::string_view name;
  char character;
};
constexpr PredefinedEntity kPredefinedEntities[] = {
    {"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''},
};

const PredefinedEntity* findPredefined(std::string_view name) {
  for (const PredefinedEntity& entity : kPredefinedEntities) {
    if (entity.name == name) return &entity;
  }
  return nullptr;
}

void appendCharacter(std::string& text, uint32_t character) {
  if (character < 0x80) {
    text += static_cast<char>(character);
    return;
  }
  int continuations = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  constexpr unsigned kLeadBytes[] = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(kLeadBytes[continuations] | character >> (6 * continuations));
  while (continuations-- > 0) text += static_cast<char>(0x80 | (character >> (6 * continuations) & 0x3F));
}

uint32_t characterNumber(std::string_view digits) {
  bool hexadecimal = digits.starts_with('x');
  if (hexadecimal) digits.remove_prefix(1);
  uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, hexadecimal ? 16 : 10);
  return number;
}

/* Appends what a reference, without "&" and ";", stands for; true if it is kept as written. */
bool appendReference(std::string& text, std::string_view name) {
  if (name.starts_with('#')) {
    appendCharacter(text, characterNumber(name.substr(1)));
    return false;
  }
  if (const PredefinedEntity* entity = findPredefined(name)) {
    text += entity->character;
    return false;
  }
  text.append(1, '&').append(name).append(1, ';');
  return true;
}

}  // namespace

StartTag::StartTag(std::string_view tag) : rest_(tag.substr(tag.find_first_of(kWhitespace))) {}

std::string_view StartTag::nextValue() {
  size_t open = rest_.find_first_of("\"'");
  size_t close = rest_.find(rest_[open], open + 1);
  std::string_view value = rest_.substr(open + 1, close - open - 1);
  rest_.remove_prefix(close + 1);
  return value;
}

std::optional<std::string> textWithEntityReferences(std::string_view value) {
  std::string text;
  bool found = false;
  for (size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '&') {
      size_t end = value.find(';', i);
      found |= appendReference(text, value.substr(i + 1, end - i - 1));
      i = end;
    } else if (value[i] == '\r' && i + 1 < value.size() && value[i + 1] == '\n') {
      continue;
    } else {
      text += kWhitespace.find(value[i]) != std::string_view::npos ? ' ' : value[i];
    }
  }
  return found ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace bq
