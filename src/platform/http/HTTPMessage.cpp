#include "platform/http/HTTPMessage.h"

#include <algorithm>
#include <string>

#include <BQ/BQData.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQString.h>
#include <BQ/BQURL.h>

#include "platform/http/Text.h"

using Field = BQHTTPMessage::Field;

BQ_DEFINE_STRING(kBQHTTPVersion1_0, "HTTP/1.0");
BQ_DEFINE_STRING(kBQHTTPVersion1_1, "HTTP/1.1");

namespace bq {
namespace {

const BQRuntimeClass kMessageClass = {
    0, "BQHTTPMessage", nullptr, nullptr, finalizeObject<BQHTTPMessage>, nullptr, nullptr, nullptr, nullptr};

constexpr size_t kUsualFieldCount = 8;

Ref<BQHTTPMessage> makeMessage() {
  return Ref<BQHTTPMessage>::adopt(makeObject<BQHTTPMessage>(BQHTTPMessageGetTypeID()));
}

/* The constant of a version, or a string of its own for any other. */
Ref<const BQString> versionOf(std::string_view text) {
  for (const BQString* version : {kBQHTTPVersion1_1, kBQHTTPVersion1_0}) {
    if (textOf(version) == text) return Ref<const BQString>::retain(version);
  }
  return Ref<const BQString>::adopt(makeText(text));
}

/* Whether the text is "HTTP/d.d ddd", alone or with a blank and more behind it. */
bool isStatusLine(std::string_view line) {
  return line.size() >= 12 && line.starts_with("HTTP/") && isDigit(line[5]) && line[6] == '.' &&
         isDigit(line[7]) && line[8] == ' ' && line[9] >= '1' && isDigit(line[9]) && isDigit(line[10]) &&
         isDigit(line[11]) && (line.size() == 12 || line[12] == ' ') && isOneLine(line);
}

/* Null if the line is no status line. */
Ref<BQHTTPMessage> makeResponse(std::string_view line) {
  if (!isStatusLine(line)) return {};
  Ref<BQHTTPMessage> message = makeMessage();
  message->statusLine = Ref<const BQString>::adopt(makeReceivedText(line));
  message->statusCode = (line[9] - '0') * 100 + (line[10] - '0') * 10 + (line[11] - '0');
  message->version = versionOf(line.substr(0, 8));
  return message;
}

bool areFieldArguments(const BQString* name, const BQString* value) {
  return isText(name) && isToken(textOf(name)) && isText(value) && isOneLine(textOf(value));
}

Field makeField(const BQString* name, const BQString* value) {
  return {std::string(textOf(name)), std::string(textOf(value))};
}

bool isNamed(const Field& field, std::string_view name) {
  return equalsIgnoringCase(field.name, name);
}

/* The values of one header, joined as if they had been sent as one. */
const BQString* copyValues(const std::vector<const Field*>& fields) {
  if (fields.size() == 1) return makeText(fields.front()->value);
  std::string joined;
  for (const Field* field : fields) {
    if (field != fields.front()) joined.append(", ");
    joined.append(field->value);
  }
  return makeText(joined);
}

bool precedes(const Field* first, const Field* second) {
  auto isLess = [](char left, char right) { return lowerCase(left) < lowerCase(right); };
  return std::lexicographical_compare(first->name.begin(), first->name.end(), second->name.begin(),
                                      second->name.end(), isLess);
}

/*
 * The fields in groups of one name, the groups in the order of their first fields. Sorting keeps a
 * peer that sends thousands of headers from making this slow.
 */
std::vector<std::vector<const Field*>> groupByName(const std::vector<Field>& fields) {
  std::vector<const Field*> sorted;
  sorted.reserve(fields.size());
  for (const Field& field : fields) sorted.push_back(&field);
  std::stable_sort(sorted.begin(), sorted.end(), precedes);
  std::vector<std::vector<const Field*>> groups;
  for (const Field* field : sorted) {
    if (groups.empty() || !isNamed(*field, groups.back().front()->name)) groups.emplace_back();
    groups.back().push_back(field);
  }
  std::sort(groups.begin(), groups.end(),
            [](const auto& first, const auto& second) { return first.front() < second.front(); });
  return groups;
}

std::string decodeReceived(std::string_view bytes) {
  auto isASCII = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (std::all_of(bytes.begin(), bytes.end(), isASCII)) return std::string(bytes);
  auto decoded = Ref<const BQString>::adopt(makeReceivedText(bytes));
  return std::string(textOf(decoded.get()));
}

void addReceivedField(BQHTTPMessage& message, std::string_view line) {
  size_t colon = line.find(':');
  if (colon == std::string_view::npos || !isToken(line.substr(0, colon))) return;
  std::string_view value = trimBlanks(line.substr(colon + 1));
  if (isOneLine(value)) {
    message.ownFields().push_back({std::string(line.substr(0, colon)), decodeReceived(value)});
  }
}

/* The next line without its end, or with the lines that it is continued on, which are unfolded. */
std::string_view takeLine(std::string_view& rest, std::string& unfolded) {
  auto next = [&rest] {
    size_t end = std::min(rest.find('\n'), rest.size());
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
  };
  std::string_view line = next();
  if (!rest.starts_with(' ') && !rest.starts_with('\t')) return line;
  unfolded = line;
  while (rest.starts_with(' ') || rest.starts_with('\t')) unfolded.append(" ").append(trimBlanks(next()));
  return unfolded;
}

}  // namespace

Ref<BQHTTPMessage> makeReceivedResponse(std::string_view lines) {
  std::string unfolded;
  Ref<BQHTTPMessage> message = makeResponse(takeLine(lines, unfolded));
  while (message && !lines.empty()) addReceivedField(*message.get(), takeLine(lines, unfolded));
  return message;
}

const Field* findHeader(const BQHTTPMessage& message, std::string_view name) {
  for (const Field& field : message.fields()) {
    if (isNamed(field, name)) return &field;
  }
  return nullptr;
}

}  // namespace bq

const std::vector<Field>& BQHTTPMessage::fields() const {
  static const std::vector<Field> none;
  return fields_ != nullptr ? *fields_ : none;
}

std::vector<Field>& BQHTTPMessage::ownFields() {
  if (fields_ != nullptr && !areShared_) return *fields_;
  auto own = std::make_shared<std::vector<Field>>();
  own->reserve(std::max(bq::kUsualFieldCount, fields().size() + 1));
  own->insert(own->end(), fields().begin(), fields().end());
  fields_ = std::move(own);
  areShared_ = false;
  return *fields_;
}

void BQHTTPMessage::shareFieldsOf(const BQHTTPMessage& other) {
  other.areShared_ = true;
  areShared_ = true;
  fields_ = other.fields_;
}

using bq::asMessage;
using bq::Ref;

BQTypeID BQHTTPMessageGetTypeID(void) {
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&bq::kMessageClass);
  return typeID;
}

BQHTTPMessage* BQHTTPMessageCreateRequest(const BQString* method, const BQURL* url, const BQString* version) {
  if (!bq::isText(method) || !bq::isToken(bq::textOf(method))) return nullptr;
  auto scheme = Ref<const BQString>::adopt(BQURLCopyScheme(url));
  if (!scheme || (version != nullptr && !bq::isText(version))) return nullptr;
  Ref<const BQString> known = bq::versionOf(version == nullptr ? "HTTP/1.1" : bq::textOf(version));
  if (known.get() != kBQHTTPVersion1_0 && known.get() != kBQHTTPVersion1_1) return nullptr;
  Ref<BQHTTPMessage> message = bq::makeMessage();
  message->method = Ref<const BQString>::adopt(BQStringCreateCopy(method));
  message->url = Ref<const BQURL>::retain(url);
  message->version = std::move(known);
  return message.release();
}

BQHTTPMessage* BQHTTPMessageCreateResponse(const BQString* statusLine) {
  return bq::isText(statusLine) ? bq::makeResponse(bq::textOf(statusLine)).release() : nullptr;
}

BQHTTPMessage* BQHTTPMessageCreateCopy(const BQHTTPMessage* message) {
  message = asMessage(message);
  if (message == nullptr) return nullptr;
  Ref<BQHTTPMessage> copy = bq::makeMessage();
  copy->method = message->method;
  copy->url = message->url;
  copy->statusLine = message->statusLine;
  copy->statusCode = message->statusCode;
  copy->version = message->version;
  copy->body = message->body;
  copy->shareFieldsOf(*message);
  return copy.release();
}

bool BQHTTPMessageIsRequest(const BQHTTPMessage* message) {
  message = asMessage(message);
  return message != nullptr && message->method;
}

const BQString* BQHTTPMessageCopyRequestMethod(const BQHTTPMessage* message) {
  message = asMessage(message);
  return message == nullptr ? nullptr : Ref<const BQString>(message->method).release();
}

const BQURL* BQHTTPMessageCopyRequestURL(const BQHTTPMessage* message) {
  message = asMessage(message);
  return message == nullptr ? nullptr : Ref<const BQURL>(message->url).release();
}

const BQString* BQHTTPMessageCopyVersion(const BQHTTPMessage* message) {
  message = asMessage(message);
  return message == nullptr ? nullptr : Ref<const BQString>(message->version).release();
}

BQIndex BQHTTPMessageGetResponseStatusCode(const BQHTTPMessage* message) {
  message = asMessage(message);
  return message == nullptr ? 0 : message->statusCode;
}

const BQString* BQHTTPMessageCopyResponseStatusLine(const BQHTTPMessage* message) {
  message = asMessage(message);
  return message == nullptr ? nullptr : Ref<const BQString>(message->statusLine).release();
}

void BQHTTPMessageSetBody(BQHTTPMessage* message, const BQData* body) {
  message = asMessage(message);
  if (message == nullptr || (body != nullptr && !bq::isInstance(body, bq::kDataTypeID))) return;
  bool isMutable = BQDataGetMutableBytePtr(const_cast<BQData*>(body)) != nullptr;
  message->body =
      isMutable ? Ref<const BQData>::adopt(BQDataCreateCopy(body)) : Ref<const BQData>::retain(body);
}

const BQData* BQHTTPMessageCopyBody(const BQHTTPMessage* message) {
  message = asMessage(message);
  return message == nullptr ? nullptr : Ref<const BQData>(message->body).release();
}

bool BQHTTPMessageSetHeaderFieldValue(BQHTTPMessage* message, const BQString* name, const BQString* value) {
  message = asMessage(message);
  if (message == nullptr || !bq::areFieldArguments(name, value == nullptr ? BQSTR("") : value)) return false;
  auto isNamed = [name = bq::textOf(name)](const Field& field) { return bq::isNamed(field, name); };
  std::vector<Field>& fields = message->ownFields();
  auto first = std::find_if(fields.begin(), fields.end(), isNamed);
  if (value == nullptr) {
    fields.erase(std::remove_if(first, fields.end(), isNamed), fields.end());
  } else if (first == fields.end()) {
    fields.push_back(bq::makeField(name, value));
  } else {
    first->value = bq::textOf(value);
    fields.erase(std::remove_if(first + 1, fields.end(), isNamed), fields.end());
  }
  return true;
}

bool BQHTTPMessageAddHeaderFieldValue(BQHTTPMessage* message, const BQString* name, const BQString* value) {
  message = asMessage(message);
  if (message == nullptr || !bq::areFieldArguments(name, value)) return false;
  message->ownFields().push_back(bq::makeField(name, value));
  return true;
}

const BQString* BQHTTPMessageCopyHeaderFieldValue(const BQHTTPMessage* message, const BQString* name) {
  message = asMessage(message);
  if (message == nullptr || !bq::isText(name)) return nullptr;
  auto isNamed = [name = bq::textOf(name)](const Field& field) { return bq::isNamed(field, name); };
  const std::vector<Field>& fields = message->fields();
  auto first = std::find_if(fields.begin(), fields.end(), isNamed);
  if (first == fields.end()) return nullptr;
  if (std::none_of(first + 1, fields.end(), isNamed)) return bq::makeText(first->value);
  std::vector<const Field*> found;
  for (auto field = first; field != fields.end(); ++field) {
    if (isNamed(*field)) found.push_back(&*field);
  }
  return bq::copyValues(found);
}

const BQDictionary* BQHTTPMessageCopyAllHeaderFields(const BQHTTPMessage* message) {
  message = asMessage(message);
  if (message == nullptr) return nullptr;
  auto groups = bq::groupByName(message->fields());
  auto fields = Ref<BQDictionary>::adopt(
      BQDictionaryCreateMutable(static_cast<BQIndex>(groups.size()), kBQDictionaryRetainKeys));
  for (const auto& group : groups) {
    auto name = Ref<const BQString>::adopt(bq::makeText(group.front()->name));
    auto value = Ref<const BQString>::adopt(bq::copyValues(group));
    BQDictionarySetValue(fields.get(), name.get(), value.get());
  }
  return BQDictionaryCreateCopy(fields.get());
}
