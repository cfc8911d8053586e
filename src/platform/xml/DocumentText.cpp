#include "platform/xml/DocumentText.h"

#include <algorithm>

#include "platform/text/StringImpl.h"

namespace bq {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kWhitespace = " \t\r\n";

/* What shows the encoding of a document in its first bytes; UTF-32 goes first, it begins like UTF-16. */
struct Signature {
  std::string_view bytes;
  BQStringEncoding encoding;
  const char* name;
};
constexpr Signature kSignatures[] = {
    {"\x00\x00\xFE\xFF"sv, kBQStringEncodingUTF32, "UTF-32"},
    {"\xFF\xFE\x00\x00"sv, kBQStringEncodingUTF32, "UTF-32"},
    {"\xFE\xFF"sv, kBQStringEncodingUTF16, "UTF-16"},
    {"\xFF\xFE"sv, kBQStringEncodingUTF16, "UTF-16"},
    {"\x00<"sv, kBQStringEncodingUTF16BE, "UTF-16BE"},
    {"<\x00"sv, kBQStringEncodingUTF16LE, "UTF-16LE"},
};

const Signature* findSignature(std::string_view bytes) {
  auto matches = [bytes](const Signature& signature) { return bytes.starts_with(signature.bytes); };
  auto found = std::find_if(std::begin(kSignatures), std::end(kSignatures), matches);
  return found == std::end(kSignatures) ? nullptr : found;
}

Ref<const BQString> decoded(std::string_view bytes, BQStringEncoding encoding) {
  return Ref<const BQString>::adopt(
      BQStringCreateWithBytesNoCopy(bytes.data(), static_cast<BQIndex>(bytes.size()), encoding));
}

BQStringEncoding encodingOfName(std::string_view name) {
  Ref<const BQString> string = decoded(name, kBQStringEncodingUTF8);
  return BQStringConvertIANACharSetNameToEncoding(string.get());
}

/*
 * Where UTF-16 that begins with a byte-order mark goes on in the other byte order: a declaration put
 * in front of a document of which only "UTF-16" was known. Such a mark is no character otherwise.
 */
size_t findSwappedMark(std::string_view bytes) {
  constexpr size_t kSearched = 512;
  for (size_t i = 2; i + 1 < std::min(bytes.size(), kSearched); i += 2) {
    if (bytes[i] == bytes[1] && bytes[i + 1] == bytes[0]) return i;
  }
  return bytes.size();
}

}  // namespace

DocumentText::DocumentText(std::string_view bytes) {
  decode(bytes);
  if (!error_) split();
}

std::string_view DocumentText::from(size_t position) const {
  size_t start = position < head_.size() ? position : position - head_.size() + tailStart_;
  return text_.substr(std::min(start, text_.size()));
}

void DocumentText::decode(std::string_view bytes) {
  if (bytes.starts_with(kUTF8Mark)) {
    textStart_ = kUTF8Mark.size();
    text_ = bytes.substr(textStart_);
  } else if (const Signature* signature = findSignature(bytes)) {
    if (signature->encoding == kBQStringEncodingUTF16) return convertUTF16(bytes);
    convert(bytes, signature->encoding, signature->name);
  } else {
    std::string_view name = XMLDeclaration(bytes).encoding();
    if (name.empty() || name == "UTF-8" || name == "utf-8") {
      text_ = bytes;
    } else {
      convert(bytes, encodingOfName(name), name);
    }
  }
}

void DocumentText::convert(std::string_view bytes, BQStringEncoding encoding, std::string_view name) {
  if (encoding == kBQStringEncodingInvalidId) return fail(BQSTR("The encoding \"%.80s\" is not known"), name);
  if (encoding == kBQStringEncodingUTF8) {
    text_ = bytes;
    return;
  }
  converted_ = decoded(bytes, encoding);
  if (!converted_) return fail(BQSTR("The bytes are not text in the encoding \"%.80s\""), name);
  text_ = viewOf(converted_.get());
  /* A declaration that could be read in ASCII can name an encoding that is nothing like it. */
  if (!text_.starts_with('<') && bytes.starts_with('<'))
    fail(BQSTR("The document is not in the encoding \"%.80s\""), name);
}

void DocumentText::convertUTF16(std::string_view bytes) {
  size_t swapped = findSwappedMark(bytes);
  if (swapped == bytes.size()) return convert(bytes, kBQStringEncodingUTF16, "UTF-16");
  Ref<const BQString> first = decoded(bytes.substr(0, swapped), kBQStringEncodingUTF16);
  Ref<const BQString> second = decoded(bytes.substr(swapped), kBQStringEncodingUTF16);
  if (!first || !second) return fail(BQSTR("The bytes are not text in the encoding \"%.80s\""), "UTF-16");
  BQString* joined = BQStringCreateMutableCopy(first.get());
  BQStringAppend(joined, second.get());
  converted_ = Ref<const BQString>::adopt(joined);
  text_ = viewOf(joined);
}

void DocumentText::fail(const BQString* format, std::string_view name) {
  error_ = Ref<const BQString>::adopt(BQStringCreateWithFormat(format, std::string(name).c_str()));
}

void DocumentText::split() {
  XMLDeclaration declaration(text_);
  if (declaration.length() == 0) return;
  size_t next = std::min(text_.find_first_not_of(kWhitespace, declaration.length()), text_.size());
  bool marked = text_.substr(next).starts_with(kUTF8Mark);
  if (!marked && declaration.replacement().empty()) return;
  size_t headLength = marked ? next : declaration.length();
  head_ = text_.substr(0, headLength);
  if (!declaration.replacement().empty()) head_.replace(0, declaration.length(), declaration.replacement());
  tailStart_ = headLength + (marked ? kUTF8Mark.size() : 0);
}

}  // namespace bq
