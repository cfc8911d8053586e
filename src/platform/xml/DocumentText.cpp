#include "platform/xml/DocumentText.h"

#include <algorithm>

#include "platform/text/EncodingUTF8.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kWhitespace = " \t\r\n";

/* Shows the encoding of a document by its first bytes. UTF-32 goes first: it begins like UTF-16. */
struct Signature {
  std::string_view bytes;
  std::string_view name;
};
constexpr Signature kSignatures[] = {
    {"\x00\x00\xFE\xFF"sv, "UTF-32"}, {"\xFF\xFE\x00\x00"sv, "UTF-32"}, {"\x00\x00\x00<"sv, "UTF-32BE"},
    {"<\x00\x00\x00"sv, "UTF-32LE"},  {"\xFE\xFF"sv, "UTF-16"},         {"\xFF\xFE"sv, "UTF-16"},
    {"\x00<"sv, "UTF-16BE"},          {"<\x00"sv, "UTF-16LE"},
};

/* "<?xm" in every encoding of the EBCDIC family. */
constexpr std::string_view kEBCDICStart = "\x4C\x6F\xA7\x94";

Ref<const BQString> decoded(std::string_view bytes, BQStringEncoding encoding) {
  return Ref<const BQString>::adopt(
      BQStringCreateWithBytesNoCopy(bytes.data(), static_cast<BQIndex>(bytes.size()), encoding));
}

BQStringEncoding encodingOfName(std::string_view name) {
  Ref<const BQString> string = decoded(name, kBQStringEncodingUTF8);
  return BQStringConvertIANACharSetNameToEncoding(string.get());
}

/*
 * The encoding that the declaration of a document in EBCDIC names. The whole family has letters, digits
 * and the hyphen in the same places, but not the quotation mark.
 */
std::string declaredEBCDIC(std::string_view bytes) {
  constexpr size_t kSearched = 256;
  constexpr std::string_view kName = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-",
                             kKeyword = "encoding";
  Ref<const BQString> start = decoded(bytes.substr(0, kSearched), encodingOfName("IBM037"));
  std::string_view text = start ? viewOf(start.get()) : "";
  text = text.substr(0, text.find("?>"));
  size_t keyword = text.find(kKeyword);
  if (keyword == std::string_view::npos) return "IBM037";
  text.remove_prefix(keyword + kKeyword.size());
  text.remove_prefix(std::min(text.find_first_of(kName), text.size()));
  return std::string(text.substr(0, text.find_first_not_of(kName)));
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

std::optional<DocumentText::BadByte> DocumentText::findBadByte() const {
  size_t bad = std::min(measureWellFormedUTF8(text_.data(), text_.size()), text_.find('\0'));
  if (bad >= text_.size()) return std::nullopt;
  std::string_view before = text_.substr(0, bad);
  return BadByte{textStart_ + bad, 1 + std::count(before.begin(), before.end(), '\n')};
}

void DocumentText::decode(std::string_view bytes) {
  auto matches = [bytes](const Signature& signature) { return bytes.starts_with(signature.bytes); };
  auto signature = std::find_if(std::begin(kSignatures), std::end(kSignatures), matches);
  if (bytes.starts_with(kUTF8Mark)) {
    textStart_ = kUTF8Mark.size();
    text_ = bytes.substr(textStart_);
  } else if (signature != std::end(kSignatures)) {
    convert(bytes, signature->name);
  } else if (bytes.starts_with(kEBCDICStart)) {
    convert(bytes, declaredEBCDIC(bytes));
  } else {
    std::string_view name = XMLDeclaration(bytes).encoding();
    if (name.empty() || name == "UTF-8" || name == "utf-8") {
      text_ = bytes;
    } else {
      convert(bytes, name);
    }
  }
  if (text_.starts_with(kUTF8Mark)) fail(BQSTR("The document begins with two byte-order marks"), "");
}

void DocumentText::convert(std::string_view bytes, std::string_view name) {
  BQStringEncoding encoding = encodingOfName(name);
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
